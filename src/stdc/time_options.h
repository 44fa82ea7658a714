// How the user writes times and dates, read at start-up for the C library's
// time functions (GetTimeOptions, GetDateOptions).
#pragma once

#include "platform/locale.h"

namespace tollan::stdc {

// Read the user's time and date formats; false when the platform cannot say.
bool GetTimeOptions() noexcept;
bool GetDateOptions() noexcept;
// Both, as one start-up step.
bool GetTimeAndDateOptions() noexcept;

// The formats read at start-up; the C locale's ("13:05:09", month/day/year)
// until then.
platform::TimeFormat timeOptions() noexcept;
platform::DateFormat dateOptions() noexcept;

}  // namespace tollan::stdc
