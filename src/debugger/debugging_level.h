// The process's debugging level, 0 to 3. Run-time checking, its reports and
// resource tracking work at level 2 and above. Start-up takes it from the
// environment variable TOLLAN_DEBUG_LEVEL.
#pragma once

#include <cstdint>

namespace tollan::debugger {

inline constexpr int32_t kCheckingLevel = 2;

int32_t debuggingLevel() noexcept;
// Reads TOLLAN_DEBUG_LEVEL once: a number from 0 to 3, else 0.
void readDebuggingLevelFromEnvironment() noexcept;

}  // namespace tollan::debugger
