// The timer thread waits on a condition variable bound to the monotonic clock
// with the earliest deadline as its absolute time-out: the same kind of sleep
// as clock_nanosleep(TIMER_ABSTIME), and a new, earlier event wakes it at once.
#include "platform/posix/timer_thread.h"

#include <pthread.h>

#include <ctime>
#include <new>
#include <vector>

namespace tollan::platform::posix {

namespace {

constexpr int64_t kNanosPerMs = 1000000;
constexpr int64_t kNanosPerSecond = 1000000000;

int64_t monotonicNs() noexcept
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * kNanosPerSecond + now.tv_nsec;
}

struct PendingEvent {
    uint32_t id;
    int64_t dueNs;
    int64_t periodNs;  // 0 for a one-shot event
    TimerEventTarget *target;
};

class TimerThread {
public:
    TimerThread() noexcept { initCondition(); }

    uint32_t add(uint32_t delayMs, TimerEventTarget *target, bool periodic) noexcept
    {
        const int64_t delayNs = static_cast<int64_t>(delayMs) * kNanosPerMs;
        pthread_mutex_lock(&mutex_);
        const uint32_t id = unusedId();
        try {
            events_.push_back(PendingEvent{id, monotonicNs() + delayNs, periodic ? delayNs : 0, target});
        } catch (...) {
            pthread_mutex_unlock(&mutex_);
            return 0;
        }
        if (running_) {
            pthread_cond_signal(&changed_);
        } else if (startThread()) {
            running_ = true;
        } else {
            events_.pop_back();
            pthread_mutex_unlock(&mutex_);
            return 0;
        }
        pthread_mutex_unlock(&mutex_);
        return id;
    }

    bool remove(uint32_t id) noexcept
    {
        pthread_mutex_lock(&mutex_);
        bool found = false;
        for (auto it = events_.begin(); it != events_.end(); ++it) {
            if (it->id == id) {
                events_.erase(it);
                found = true;
                break;
            }
        }
        pthread_mutex_unlock(&mutex_);
        return found;
    }

    void lockForFork() noexcept { pthread_mutex_lock(&mutex_); }
    void unlockAfterFork() noexcept { pthread_mutex_unlock(&mutex_); }
    void resetInChild() noexcept
    {
        events_.clear();
        running_ = false;
        pthread_cond_destroy(&changed_);
        initCondition();
        pthread_mutex_unlock(&mutex_);
    }

private:
    void initCondition() noexcept
    {
        pthread_condattr_t attributes;
        pthread_condattr_init(&attributes);
        pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
        pthread_cond_init(&changed_, &attributes);
        pthread_condattr_destroy(&attributes);
    }

    // Ids count up from 1, skipping 0 and the ids still pending.
    uint32_t unusedId() noexcept
    {
        for (;;) {
            const uint32_t id = nextId_++;
            if (id == 0) continue;
            bool inUse = false;
            for (const PendingEvent &event : events_) inUse = inUse || event.id == id;
            if (!inUse) return id;
        }
    }

    bool startThread() noexcept
    {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
        pthread_t thread;
        const bool started = pthread_create(&thread, &attributes, &TimerThread::main, this) == 0;
        pthread_attr_destroy(&attributes);
        return started;
    }

    static void *main(void *self) noexcept
    {
        static_cast<TimerThread *>(self)->run();
        return nullptr;
    }

    // Delivers events until none is pending. Targets are called without the
    // lock, so that they may add and remove events themselves.
    void run() noexcept
    {
        pthread_mutex_lock(&mutex_);
        while (!events_.empty()) {
            PendingEvent *next = &events_.front();
            for (PendingEvent &event : events_)
                if (event.dueNs < next->dueNs) next = &event;
            const int64_t now = monotonicNs();
            if (next->dueNs > now) {
                const timespec deadline{static_cast<time_t>(next->dueNs / kNanosPerSecond),
                                        static_cast<long>(next->dueNs % kNanosPerSecond)};
                pthread_cond_timedwait(&changed_, &mutex_, &deadline);
                continue;
            }
            const PendingEvent due = *next;
            if (due.periodNs == 0) {
                events_.erase(events_.begin() + (next - events_.data()));
            } else {
                // Stay on the period's grid: after a stall the missed periods
                // are delivered at once, one call each, as a count of calls
                // over time expects.
                next->dueNs += due.periodNs;
            }
            pthread_mutex_unlock(&mutex_);
            due.target->fire(due.id, due.target->context);
            pthread_mutex_lock(&mutex_);
        }
        running_ = false;
        pthread_mutex_unlock(&mutex_);
    }

    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t changed_;
    std::vector<PendingEvent> events_;
    uint32_t nextId_ = 1;
    bool running_ = false;
};

TimerThread *instance = nullptr;

// A child of fork() has no timer thread and starts without pending events;
// the lock is held across the fork so that the child gets it whole.
void beforeFork() noexcept
{
    instance->lockForFork();
}

void afterForkInParent() noexcept
{
    instance->unlockAfterFork();
}

void afterForkInChild() noexcept
{
    instance->resetInChild();
}

// Lives as long as the process: the detached thread may still be leaving
// while static objects are destroyed.
TimerThread *timerThread() noexcept
{
    static TimerThread *const made = [] {
        instance = new (std::nothrow) TimerThread;
        if (instance != nullptr) pthread_atfork(beforeFork, afterForkInParent, afterForkInChild);
        return instance;
    }();
    return made;
}

}  // namespace

uint32_t monotonicMs() noexcept
{
    return static_cast<uint32_t>(monotonicNs() / kNanosPerMs);
}

uint32_t addTimerEvent(uint32_t delayMs, TimerEventTarget *target, bool periodic) noexcept
{
    TimerThread *thread = timerThread();
    if (!thread || !target || !target->fire) return 0;
    return thread->add(delayMs, target, periodic);
}

bool removeTimerEvent(uint32_t eventId) noexcept
{
    TimerThread *thread = timerThread();
    return thread && thread->remove(eventId);
}

}  // namespace tollan::platform::posix
