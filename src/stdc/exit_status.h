// How the program ended, as the shutdown chain records it: -132 when the
// user stopped it with a break from the debugger, -19 otherwise.
#pragma once

#include <cstdint>

namespace tollan::stdc {

inline constexpr int32_t kExitByUserBreak = -132;
inline constexpr int32_t kExitNormal = -19;

// Remembers `status`; only whether kExitByUserBreak was ever given is kept.
void recordExitStatus(int32_t status) noexcept;
// True once kExitByUserBreak was recorded.
bool exitedByUserBreak() noexcept;

}  // namespace tollan::stdc
