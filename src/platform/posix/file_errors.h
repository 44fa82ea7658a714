// errno values as the formatting library's I/O error codes.
#pragma once

#include <cstdint>

namespace tollan::platform {

// The I/O error code closest to what the same failure gives on Windows;
// errno values without a closer match are a general I/O failure (2).
int32_t ioErrorFromErrno(int errorNumber) noexcept;

}  // namespace tollan::platform
