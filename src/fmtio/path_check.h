// The checks every path of the file functions passes first.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tollan::fmtio {

// The longest path the file functions accept (MAX_PATH less its terminator).
inline constexpr size_t kMaxPathLength = 259;

// 0 for a usable path; 7 for NULL, an empty path or one made only of blanks,
// tabs, CR and LF; 10 for one longer than kMaxPathLength.
int32_t checkPath(const char *path) noexcept;

}  // namespace tollan::fmtio
