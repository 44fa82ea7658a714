#include "timing/locks.h"

#include "services/process_object.h"

namespace tollan::timing {
namespace {
struct TimerLockTag;
struct LiveTimersLockTag;
struct SharedScratchLockTag;
}  // namespace

platform::RecursiveLock &timerLock() noexcept
{
    return services::processObject<platform::RecursiveLock, TimerLockTag>();
}

platform::RecursiveLock &liveTimersLock() noexcept
{
    return services::processObject<platform::RecursiveLock, LiveTimersLockTag>();
}

platform::RecursiveLock &sharedScratchLock() noexcept
{
    return services::processObject<platform::RecursiveLock, SharedScratchLockTag>();
}

}  // namespace tollan::timing
