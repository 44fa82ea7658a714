// The formatting library's I/O error codes (GetFmtIOError), and how a
// failure of the platform's file calls becomes one.
#pragma once

#include <cstdint>

#include "platform/file.h"

namespace tollan::fmtio {

namespace ioerror {
inline constexpr int32_t kNone = 0;
inline constexpr int32_t kFileNotFound = 1;
inline constexpr int32_t kGeneral = 2;
inline constexpr int32_t kBadHandle = 3;
inline constexpr int32_t kNoMemory = 4;
inline constexpr int32_t kFileExists = 5;
inline constexpr int32_t kAccessDenied = 6;
inline constexpr int32_t kInvalidArgument = 7;
inline constexpr int32_t kTooManyFiles = 8;
inline constexpr int32_t kDiskFull = 9;
inline constexpr int32_t kNameTooLong = 10;
inline constexpr int32_t kStringTooLong = 11;
}  // namespace ioerror

// The platform numbers its file errors as this library does; the checks keep
// the two lists from drifting apart.
inline int32_t ioErrorOf(platform::FileError error) noexcept
{
    using platform::FileError;
    static_assert(static_cast<int32_t>(FileError::notFound) == ioerror::kFileNotFound);
    static_assert(static_cast<int32_t>(FileError::general) == ioerror::kGeneral);
    static_assert(static_cast<int32_t>(FileError::badHandle) == ioerror::kBadHandle);
    static_assert(static_cast<int32_t>(FileError::noMemory) == ioerror::kNoMemory);
    static_assert(static_cast<int32_t>(FileError::exists) == ioerror::kFileExists);
    static_assert(static_cast<int32_t>(FileError::accessDenied) == ioerror::kAccessDenied);
    static_assert(static_cast<int32_t>(FileError::invalidArgument) == ioerror::kInvalidArgument);
    static_assert(static_cast<int32_t>(FileError::tooManyFiles) == ioerror::kTooManyFiles);
    static_assert(static_cast<int32_t>(FileError::diskFull) == ioerror::kDiskFull);
    static_assert(static_cast<int32_t>(FileError::nameTooLong) == ioerror::kNameTooLong);
    return static_cast<int32_t>(error);
}

}  // namespace tollan::fmtio
