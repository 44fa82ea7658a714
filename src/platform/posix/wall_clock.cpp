// Wall-clock time on clock_gettime and localtime_r.
#include "platform/wall_clock.h"

#include <ctime>

namespace tollan::platform {

int64_t wallClockMilliseconds() noexcept
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

bool localTimeAt(int64_t milliseconds, LocalTime *out) noexcept
{
    if (!out) return false;
    // Rounded down, so that times before 1970 keep a positive remainder.
    int64_t seconds = milliseconds / 1000 - (milliseconds % 1000 < 0 ? 1 : 0);
    time_t when = static_cast<time_t>(seconds);
    tm fields{};
    if (!localtime_r(&when, &fields)) return false;
    *out = LocalTime{fields.tm_year + 1900,
                     fields.tm_mon + 1,
                     fields.tm_mday,
                     fields.tm_hour,
                     fields.tm_min,
                     fields.tm_sec,
                     static_cast<int>(milliseconds - seconds * 1000)};
    return true;
}

}  // namespace tollan::platform
