// Wall-clock time as one number, and its local broken-down form, for callers
// that convert a second once and reuse it (the logger's time stamps).
#pragma once

#include <cstdint>

#include "platform/clock.h"

namespace tollan::platform {

// Milliseconds since 1970-01-01 00:00 UTC (GetSystemTimeAsFileTime; CLOCK_REALTIME elsewhere).
int64_t wallClockMilliseconds() noexcept;
// The local time at `milliseconds` (a value of wallClockMilliseconds); false
// when it cannot be converted.
bool localTimeAt(int64_t milliseconds, LocalTime *out) noexcept;

}  // namespace tollan::platform
