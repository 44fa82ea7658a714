// Level names as lines show them.
#pragma once

#include <cstdint>

namespace tollan::logger {

// "TRACE", "TIMING", ... for a single level bit; "UNKNOWN" for anything else.
const char *levelName(uint32_t level) noexcept;

}  // namespace tollan::logger
