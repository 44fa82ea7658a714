// Clocks on clock_gettime: the performance counter counts nanoseconds of the
// monotonic clock.
#include "platform/clock.h"

#include <ctime>

namespace tollan::platform {

namespace {

int64_t monotonicNs() noexcept
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

}  // namespace

bool performanceFrequency(int64_t *countsPerSecond) noexcept
{
    if (!countsPerSecond) return false;
    *countsPerSecond = 1000000000;
    return true;
}

bool performanceCounter(int64_t *count) noexcept
{
    if (!count) return false;
    *count = monotonicNs();
    return true;
}

uint32_t tickCountMs() noexcept
{
    return static_cast<uint32_t>(monotonicNs() / 1000000);
}

bool localTime(LocalTime *out) noexcept
{
    if (!out) return false;
    timespec now{};
    tm fields{};
    if (clock_gettime(CLOCK_REALTIME, &now) != 0 || !localtime_r(&now.tv_sec, &fields)) return false;
    *out = LocalTime{fields.tm_year + 1900,
                     fields.tm_mon + 1,
                     fields.tm_mday,
                     fields.tm_hour,
                     fields.tm_min,
                     fields.tm_sec,
                     static_cast<int>(now.tv_nsec / 1000000)};
    return true;
}

}  // namespace tollan::platform
