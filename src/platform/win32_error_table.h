// The one table that turns a Win32 error code into a C errno value and an
// I/O error code of the formatting library. It is plain data, so both
// backends (and the C library, which takes the errno column) can use it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tollan::platform {

struct Win32ErrorMapping {
    uint32_t win32Error;
    int32_t errnoValue;
    int32_t ioError;
};

// The first row for code, searched in table order; an unlisted code gives
// errno 5 (EIO) and I/O error 2 (general I/O failure), with win32Error = code.
Win32ErrorMapping mapWin32Error(uint32_t code) noexcept;

// The whole table, for those that must walk it.
const Win32ErrorMapping *win32ErrorTable(size_t *rowCount) noexcept;

}  // namespace tollan::platform
