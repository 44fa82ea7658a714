// The time library's time-zone data, read at start-up (InitTimeLib).
#pragma once

#include "platform/locale.h"

namespace tollan::stdc {

// The text of the start-up result -102, with which WMain stops when the
// time-zone data cannot be read.
inline constexpr const char *kTimeLibraryFailedText =
    "The time library could not read the time-zone information";

// Reads the time zone. On failure writes a WARNING line with
// kTimeLibraryFailedText (unless the logger is configuring itself) and
// returns false.
bool InitTimeLib() noexcept;

// The zone read at start-up; UTC until then.
platform::TimeZone timeZoneData() noexcept;

}  // namespace tollan::stdc
