#include "stdc/time_options.h"

namespace tollan::stdc {
namespace {

// Written at start-up on the loading thread, before other threads call in.
constinit platform::TimeFormat time{true, true, ':'};
constinit platform::DateFormat date{platform::DateOrder::monthDayYear, false, '/'};

}  // namespace

bool GetTimeOptions() noexcept
{
    return platform::userTimeFormat(&time);
}

bool GetDateOptions() noexcept
{
    return platform::userDateFormat(&date);
}

bool GetTimeAndDateOptions() noexcept
{
    return GetTimeOptions() && GetDateOptions();
}

platform::TimeFormat timeOptions() noexcept
{
    return time;
}

platform::DateFormat dateOptions() noexcept
{
    return date;
}

}  // namespace tollan::stdc
