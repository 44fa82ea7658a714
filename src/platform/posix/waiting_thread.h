// A process-wide helper thread that sleeps on a condition variable bound to
// the monotonic clock until a deadline or until it is woken: the same kind of
// sleep as clock_nanosleep(TIMER_ABSTIME), cut short by a new, earlier
// deadline. The thread is started on demand, leaves when its work is done,
// and is detached: it may still be leaving while static objects are
// destroyed, so the object lives as long as the process (processWide()).
#pragma once

#include <pthread.h>

#include <cstdint>
#include <limits>
#include <new>

namespace tollan::platform::posix {

class WaitingThread {
public:
    static constexpr int64_t kNever = std::numeric_limits<int64_t>::max();

    WaitingThread(const WaitingThread &) = delete;
    WaitingThread &operator=(const WaitingThread &) = delete;

    // The lock is held across fork() so that the child gets it whole; the
    // child has no thread.
    void lockForFork() noexcept { pthread_mutex_lock(&mutex_); }
    void unlockAfterFork() noexcept { pthread_mutex_unlock(&mutex_); }
    void resetInChild() noexcept;

protected:
    WaitingThread() noexcept;
    ~WaitingThread() = default;

    // The thread's work, entered with the lock held and left with it held
    // when there is no more.
    virtual void run() noexcept = 0;
    // What a child of fork() forgets, under the lock.
    virtual void forgetInChild() noexcept {}

    // Under the lock: wakes the thread if it is running.
    void wake() noexcept;
    // Under the lock: wakes the thread, or starts it when it is not running.
    // False when it cannot be started.
    bool wakeOrStart() noexcept;
    // Under the lock: sleeps until the monotonic time dueNs (kNever: until
    // woken), or until woken.
    void sleepUntil(int64_t dueNs) noexcept;

    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
    bool running_ = false;

private:
    void initCondition() noexcept;
    static void *main(void *self) noexcept;

    pthread_cond_t changed_;
};

// The one object of a kind of waiting thread, made at first use, with the
// fork handlers that keep it usable in a child.
template <class Thread>
Thread *processWide() noexcept
{
    static Thread *instance = nullptr;
    static Thread *const made = [] {
        instance = new (std::nothrow) Thread;
        if (instance != nullptr)
            pthread_atfork([] { instance->lockForFork(); }, [] { instance->unlockAfterFork(); },
                           [] { instance->resetInChild(); });
        return instance;
    }();
    return made;
}

}  // namespace tollan::platform::posix
