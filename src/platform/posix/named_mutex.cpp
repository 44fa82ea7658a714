// Named mutexes: a recursive, robust, process-shared pthread mutex inside a
// shared region. A mutex whose owner died is handed to the next waiter, as
// Windows hands over an abandoned mutex.
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <new>

#include "platform/event.h"
#include "platform/posix/deadline.h"
#include "platform/posix/named_region.h"

namespace tollan::platform {

namespace {

class PosixNamedMutex final : public NamedMutex {
public:
    explicit PosixNamedMutex(std::unique_ptr<posix::NamedRegion> region) noexcept
        : region_(std::move(region)), mutex_(static_cast<pthread_mutex_t *>(region_->payload()))
    {
    }
    ~PosixNamedMutex() override
    {
        // As on Windows, closing does not release a mutex that is still held.
        if (held_.load(std::memory_order_relaxed) > 0) region_->keepMapped();
    }

    WaitResult acquire(uint32_t timeoutMs) noexcept override
    {
        int error = pthread_mutex_trylock(mutex_);
        if (error == EBUSY)
            error = timeoutMs == kWaitForever ? pthread_mutex_lock(mutex_) : lockBefore(timeoutMs);
        if (error == EOWNERDEAD) error = pthread_mutex_consistent(mutex_);
        if (error == 0) {
            held_.fetch_add(1, std::memory_order_relaxed);
            return WaitResult::signalled;
        }
        return error == ETIMEDOUT ? WaitResult::timedOut : WaitResult::failed;
    }

    void release() noexcept override
    {
        if (pthread_mutex_unlock(mutex_) == 0) held_.fetch_sub(1, std::memory_order_relaxed);
    }

private:
    // pthread_mutex_timedlock measures on the wall clock, which may jump: the
    // wait goes in short slices, each bounded by what the monotonic clock
    // says is left.
    int lockBefore(uint32_t timeoutMs) noexcept
    {
        const timespec deadline = posix::monotonicDeadline(timeoutMs);
        for (;;) {
            const uint32_t sliceMs = std::min<uint32_t>(posix::remainingMs(deadline), 100);
            timespec sliceEnd{};
            clock_gettime(CLOCK_REALTIME, &sliceEnd);
            sliceEnd.tv_nsec += static_cast<long>(sliceMs) * 1000000L;
            sliceEnd.tv_sec += sliceEnd.tv_nsec / 1000000000L;
            sliceEnd.tv_nsec %= 1000000000L;
            const int error = pthread_mutex_timedlock(mutex_, &sliceEnd);
            if (error != ETIMEDOUT || posix::remainingMs(deadline) == 0) return error;
        }
    }

    std::unique_ptr<posix::NamedRegion> region_;
    pthread_mutex_t *mutex_;
    std::atomic<int> held_{0};  // acquisitions through this object not yet released
};

bool initSharedMutex(void *payload, void *) noexcept
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    const int error = pthread_mutex_init(new (payload) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
    return error == 0;
}

}  // namespace

std::unique_ptr<NamedMutex> NamedMutex::create(const char *name) noexcept
{
    auto region = posix::NamedRegion::acquire(posix::RegionKind::mutex, name, sizeof(pthread_mutex_t), true,
                                              initSharedMutex, nullptr);
    if (!region) return nullptr;
    return std::unique_ptr<NamedMutex>(new (std::nothrow) PosixNamedMutex(std::move(region)));
}

}  // namespace tollan::platform
