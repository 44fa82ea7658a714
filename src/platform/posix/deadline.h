// Absolute deadlines on the monotonic clock, for timed waits.
#pragma once

#include <cstdint>
#include <ctime>

namespace tollan::platform::posix {

// Monotonic nanoseconds now.
int64_t monotonicNowNs() noexcept;

// The monotonic time timeoutMs milliseconds from now.
timespec monotonicDeadline(uint32_t timeoutMs) noexcept;

// Milliseconds left until `deadline` (0 once it has passed).
uint32_t remainingMs(const timespec &deadline) noexcept;

}  // namespace tollan::platform::posix
