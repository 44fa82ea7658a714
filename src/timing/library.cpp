// The utility library's start-up, shutdown and run-state hooks.
#include "timing/library.h"

#include "services/run_state.h"
#include "timing/live_timers.h"
#include "timing/locks.h"
#include "timing/scratch.h"

namespace tollan::timing {

namespace {

// A stopping program's timers must not call into it any more. The stop may
// come from a module's unload code, where waiting for a timer thread could
// deadlock, so the timers are let go without waiting.
void onRunStateChange(int32_t event) noexcept
{
    if (event != services::kRunStateStop) return;
    for (const auto &[timer, engine] : takeLiveTimers()) engine->releaseTimer(timer);
}

}  // namespace

bool UtilityLibraryInitOnce() noexcept
{
    timerLock();
    liveTimersLock();
    sharedScratchLock();
    return reserveScratchSlot();
}

void UtilityLibraryCleanup() noexcept
{
    freeThreadScratch();
    releaseScratchSlot();
}

void UtilityLibraryThreadCleanup() noexcept
{
    freeThreadScratch();
}

bool RegisterUtilityLibraryRunStateChangeCallback() noexcept
{
    return services::RegisterRunStateChangeCallback(&onRunStateChange) != 0;
}

}  // namespace tollan::timing
