// errno values as FileError.
#pragma once

#include "platform/file.h"

namespace tollan::platform {

// The FileError closest to what the same failure gives on Windows; errno
// values without a closer match are a general failure.
FileError fileErrorFromErrno(int errorNumber) noexcept;

}  // namespace tollan::platform
