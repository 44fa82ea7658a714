// The process's one timer thread: it sleeps to the earliest absolute deadline
// on the monotonic clock and calls each due event's target. The thread starts
// with the first pending event and leaves when none is left.
#pragma once

#include <cstdint>

#include "platform/multimedia_timer.h"

namespace tollan::platform::posix {

// Monotonic milliseconds, truncated to 32 bits (timeGetTime's clock).
uint32_t monotonicMs() noexcept;

// An event's id, 0 when the event cannot be added (no memory, no thread).
uint32_t addTimerEvent(uint32_t delayMs, TimerEventTarget *target, bool periodic) noexcept;
// False when no pending event has that id.
bool removeTimerEvent(uint32_t eventId) noexcept;

}  // namespace tollan::platform::posix
