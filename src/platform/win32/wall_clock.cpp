// Wall-clock time on the system time's FILETIME (100 ns units since 1601).
#include "platform/wall_clock.h"

#include <windows.h>

namespace tollan::platform {

namespace {

constexpr int64_t kUnitsPerMillisecond = 10000;
// 1970-01-01 in FILETIME units.
constexpr int64_t kUnixEpochUnits = 116444736000000000;

}  // namespace

int64_t wallClockMilliseconds() noexcept
{
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    int64_t units =
        static_cast<int64_t>((static_cast<uint64_t>(now.dwHighDateTime) << 32) | now.dwLowDateTime);
    return (units - kUnixEpochUnits) / kUnitsPerMillisecond;
}

bool localTimeAt(int64_t milliseconds, LocalTime *out) noexcept
{
    if (!out) return false;
    uint64_t units = static_cast<uint64_t>(milliseconds * kUnitsPerMillisecond + kUnixEpochUnits);
    FILETIME when{static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
    SYSTEMTIME universal;
    SYSTEMTIME local;
    // Both return FALSE on failure.
    if (!FileTimeToSystemTime(&when, &universal) ||
        !SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local))
        return false;
    *out = LocalTime{local.wYear,   local.wMonth,  local.wDay,         local.wHour,
                     local.wMinute, local.wSecond, local.wMilliseconds};
    return true;
}

}  // namespace tollan::platform
