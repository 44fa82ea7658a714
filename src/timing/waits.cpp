// Timer, Delay and SyncWait: the user's view of the process clock.
#include <tollan/utility.h>

#include "timing/time_source.h"
#include "timing/timer_clock.h"

using namespace tollan::timing;

double Timer(void) noexcept
{
    return readTimer();
}

void Delay(double seconds) noexcept
{
    if (!(seconds > 0.0)) return;
    const double now = readTimer();
    const double deadline = waitResolution() + (now + seconds);
    if (!(deadline > now)) return;
    waitUntil(deadline, now);
}

void SyncWait(double beginTime, double interval) noexcept
{
    if (!(interval > 0.0)) return;
    const double deadline = waitResolution() + (beginTime + interval);
    waitUntil(deadline, readTimer());
}
