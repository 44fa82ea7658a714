#include "timing/locks.h"

#include "timing/process_object.h"

namespace tollan::timing {

platform::RecursiveLock &timerLock() noexcept
{
    return processObject<platform::RecursiveLock, 0>();
}

platform::RecursiveLock &liveTimersLock() noexcept
{
    return processObject<platform::RecursiveLock, 1>();
}

platform::RecursiveLock &sharedScratchLock() noexcept
{
    return processObject<platform::RecursiveLock, 2>();
}

}  // namespace tollan::timing
