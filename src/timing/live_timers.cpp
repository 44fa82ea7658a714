#include "timing/live_timers.h"

#include <unordered_map>

#include "services/process_object.h"

namespace tollan::timing {

namespace {

// Lives as long as the process, like the timers it lists.
std::unordered_map<void *, ZORUSTE *> &table() noexcept
{
    return services::processObject<std::unordered_map<void *, ZORUSTE *>>();
}

}  // namespace

ZORUSTE *liveTimerEngine(void *timer) noexcept
{
    const auto found = table().find(timer);
    return found == table().end() ? nullptr : found->second;
}

bool addLiveTimer(void *timer, ZORUSTE *engine) noexcept
{
    std::lock_guard guard(liveTimersLock());
    try {
        table().emplace(timer, engine);
        return true;
    } catch (...) {
        return false;
    }
}

ZORUSTE *removeLiveTimer(void *timer) noexcept
{
    std::lock_guard guard(liveTimersLock());
    ZORUSTE *engine = liveTimerEngine(timer);
    if (engine) table().erase(timer);
    return engine;
}

std::vector<std::pair<void *, ZORUSTE *>> takeLiveTimers() noexcept
{
    std::lock_guard guard(liveTimersLock());
    std::vector<std::pair<void *, ZORUSTE *>> timers;
    try {
        timers.assign(table().begin(), table().end());
    } catch (...) {
        return timers;  // without memory the timers stay live
    }
    table().clear();
    return timers;
}

}  // namespace tollan::timing
