// RecursiveLock on a recursive pthread mutex kept inside the object's own storage.
#include "platform/lock.h"

#include <pthread.h>

#include <new>

namespace tollan::platform {

static_assert(sizeof(pthread_mutex_t) <= 64, "RecursiveLock storage is too small for pthread_mutex_t");
static_assert(alignof(pthread_mutex_t) <= 16, "RecursiveLock storage is under-aligned");

static pthread_mutex_t *native(unsigned char *storage) noexcept
{
    return std::launder(reinterpret_cast<pthread_mutex_t *>(storage));
}

RecursiveLock::RecursiveLock() noexcept
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(new (native_) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

RecursiveLock::~RecursiveLock()
{
    pthread_mutex_destroy(native(native_));
}

void RecursiveLock::lock() noexcept
{
    pthread_mutex_lock(native(native_));
}

bool RecursiveLock::try_lock() noexcept
{
    return pthread_mutex_trylock(native(native_)) == 0;
}

void RecursiveLock::unlock() noexcept
{
    pthread_mutex_unlock(native(native_));
}

}  // namespace tollan::platform
