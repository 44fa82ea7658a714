// Clocks: the performance counter, the millisecond tick and wall-clock time.
#pragma once

#include <cstdint>

namespace tollan::platform {

// QueryPerformanceCounter/Frequency; the monotonic clock in nanoseconds elsewhere.
bool performanceFrequency(int64_t *countsPerSecond) noexcept;
bool performanceCounter(int64_t *count) noexcept;
// GetTickCount: milliseconds since an arbitrary start, wrapping at 2^32.
uint32_t tickCountMs() noexcept;

// Local wall-clock time, broken down (GetLocalTime's fields).
struct LocalTime {
    int year, month, day, hour, minute, second, milliseconds;
};
bool localTime(LocalTime *out) noexcept;

}  // namespace tollan::platform
