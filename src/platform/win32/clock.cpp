// Clocks: the performance counter, GetTickCount and GetLocalTime.
#include "platform/clock.h"

#include <windows.h>

namespace tollan::platform {

bool performanceFrequency(int64_t *countsPerSecond) noexcept
{
    LARGE_INTEGER frequency;
    if (!countsPerSecond || !QueryPerformanceFrequency(&frequency)) return false;
    *countsPerSecond = frequency.QuadPart;
    return true;
}

bool performanceCounter(int64_t *count) noexcept
{
    LARGE_INTEGER counter;
    if (!count || !QueryPerformanceCounter(&counter)) return false;
    *count = counter.QuadPart;
    return true;
}

uint32_t tickCountMs() noexcept
{
    return GetTickCount();
}

bool localTime(LocalTime *out) noexcept
{
    if (!out) return false;
    SYSTEMTIME now;
    GetLocalTime(&now);
    *out = LocalTime{now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds};
    return true;
}

}  // namespace tollan::platform
