// The source module the formatting library's log lines name.
#pragma once

namespace tollan::fmtio {

inline constexpr const char *kLogModule = "stdlib/fmtio";

}  // namespace tollan::fmtio
