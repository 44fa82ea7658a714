// RecursiveLock on a CRITICAL_SECTION kept inside the object's own storage.
#include "platform/lock.h"

#include <windows.h>

#include <new>

namespace tollan::platform {

static_assert(sizeof(CRITICAL_SECTION) <= 64, "RecursiveLock storage is too small for CRITICAL_SECTION");
static_assert(alignof(CRITICAL_SECTION) <= 16, "RecursiveLock storage is under-aligned");

static CRITICAL_SECTION *native(unsigned char *storage) noexcept
{
    return std::launder(reinterpret_cast<CRITICAL_SECTION *>(storage));
}

RecursiveLock::RecursiveLock() noexcept
{
    InitializeCriticalSection(new (native_) CRITICAL_SECTION);
}

RecursiveLock::~RecursiveLock()
{
    DeleteCriticalSection(native(native_));
}

void RecursiveLock::lock() noexcept
{
    EnterCriticalSection(native(native_));
}

bool RecursiveLock::try_lock() noexcept
{
    return TryEnterCriticalSection(native(native_)) != 0;
}

void RecursiveLock::unlock() noexcept
{
    LeaveCriticalSection(native(native_));
}

}  // namespace tollan::platform
