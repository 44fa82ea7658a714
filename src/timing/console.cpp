// The console helpers and the real-time targets' microsecond functions, which
// have nothing to do on this platform.
#include <tollan/utility.h>

#include "platform/system.h"

int32_t ZOR_Beep(void) noexcept
{
    return tollan::platform::beep();
}

void Cls(void) noexcept {}

uint64_t GetTimeUS(void) noexcept
{
    return 0;
}

int32_t SleepUS(uint64_t) noexcept
{
    return 0;
}

int32_t SleepUntilUS(uint64_t) noexcept
{
    return 0;
}

int32_t SleepUntilNextMultipleUS(uint64_t) noexcept
{
    return 0;
}
