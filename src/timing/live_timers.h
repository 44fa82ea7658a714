// The timers handed out and not yet discarded, each with the engine that made
// it. Every timer call is checked against this table, so that a stale or
// foreign handle, or a second discard, is refused instead of freeing twice.
#pragma once

#include <mutex>
#include <utility>
#include <vector>

#include "timing/locks.h"
#include "timing/zoruste.h"

namespace tollan::timing {

// The engine of a live timer; null for anything else. Call under liveTimersLock().
ZORUSTE *liveTimerEngine(void *timer) noexcept;
// Adds a timer; false when memory is short.
bool addLiveTimer(void *timer, ZORUSTE *engine) noexcept;
// Removes a timer and returns its engine; null when it is not live.
ZORUSTE *removeLiveTimer(void *timer) noexcept;
// Removes every live timer, for the caller to let go.
std::vector<std::pair<void *, ZORUSTE *>> takeLiveTimers() noexcept;

// Runs operation(engine) with the timer's engine while the timer stays live;
// `refused` when the timer is not live.
template <typename Result, typename Operation>
Result withLiveTimer(void *timer, Result refused, Operation operation) noexcept
{
    std::lock_guard guard(liveTimersLock());
    ZORUSTE *engine = liveTimerEngine(timer);
    return engine ? operation(*engine) : refused;
}

}  // namespace tollan::timing
