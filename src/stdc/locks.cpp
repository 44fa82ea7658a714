#include "stdc/locks.h"

#include <atomic>
#include <new>

#include "services/resource_failure.h"

namespace tollan::stdc {
namespace {

constexpr int kCount = static_cast<int>(SharedLock::count);
constinit std::atomic<platform::RecursiveLock *> locks[kCount] = {};

}  // namespace

bool createSharedLocks() noexcept
{
    for (std::atomic<platform::RecursiveLock *> &slot : locks) {
        if (slot.load() != nullptr) continue;
        auto *lock = new (std::nothrow) platform::RecursiveLock;
        if (lock == nullptr) {
            TOLLAN_RESOURCE_FAILURE("Stdlib/ansi_c", "InitAsyncAndMTProtection",
                                    "no memory for a C library lock");
            return false;
        }
        slot.store(lock, std::memory_order_release);
    }
    return true;
}

void releaseSharedLocks() noexcept
{
    for (std::atomic<platform::RecursiveLock *> &slot : locks) delete slot.exchange(nullptr);
}

platform::RecursiveLock *sharedLock(SharedLock which) noexcept
{
    return locks[static_cast<int>(which)].load(std::memory_order_acquire);
}

}  // namespace tollan::stdc
