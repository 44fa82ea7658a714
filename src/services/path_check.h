// The check every path of the file functions and the C streams passes first.
#pragma once

#include <cstddef>

#include "platform/file.h"

namespace tollan::services {

// The longest path the libraries accept (MAX_PATH less its terminator).
inline constexpr size_t kMaxPathLength = 259;

// none for a usable path; invalidArgument for NULL, an empty path or one
// made only of blanks, tabs, CR and LF; nameTooLong for one longer than
// kMaxPathLength.
platform::FileError checkPath(const char *path) noexcept;

}  // namespace tollan::services
