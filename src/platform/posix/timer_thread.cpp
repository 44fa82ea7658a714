// The timer thread sleeps to the earliest pending event, and a new, earlier
// event wakes it at once.
#include "platform/posix/timer_thread.h"

#include <pthread.h>

#include <vector>

#include "platform/posix/deadline.h"
#include "platform/posix/waiting_thread.h"

namespace tollan::platform::posix {

namespace {

constexpr int64_t kNanosPerMs = 1000000;

struct PendingEvent {
    uint32_t id;
    int64_t dueNs;
    int64_t periodNs;  // 0 for a one-shot event
    TimerEventTarget *target;
};

class TimerThread final : public WaitingThread {
public:
    uint32_t add(uint32_t delayMs, TimerEventTarget *target, bool periodic) noexcept
    {
        const int64_t delayNs = static_cast<int64_t>(delayMs) * kNanosPerMs;
        pthread_mutex_lock(&mutex_);
        const uint32_t id = unusedId();
        try {
            events_.push_back(PendingEvent{id, monotonicNowNs() + delayNs, periodic ? delayNs : 0, target});
        } catch (...) {
            pthread_mutex_unlock(&mutex_);
            return 0;
        }
        if (!wakeOrStart()) {
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

private:
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

    // Delivers events until none is pending. Targets are called without the
    // lock, so that they may add and remove events themselves.
    void run() noexcept override
    {
        while (!events_.empty()) {
            PendingEvent *next = &events_.front();
            for (PendingEvent &event : events_)
                if (event.dueNs < next->dueNs) next = &event;
            const int64_t now = monotonicNowNs();
            if (next->dueNs > now) {
                sleepUntil(next->dueNs);
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
    }

    // A child of fork() starts without pending events.
    void forgetInChild() noexcept override { events_.clear(); }

    std::vector<PendingEvent> events_;
    uint32_t nextId_ = 1;
};

}  // namespace

uint32_t monotonicMs() noexcept
{
    return static_cast<uint32_t>(monotonicNowNs() / kNanosPerMs);
}

uint32_t addTimerEvent(uint32_t delayMs, TimerEventTarget *target, bool periodic) noexcept
{
    TimerThread *thread = processWide<TimerThread>();
    if (!thread || !target || !target->fire) return 0;
    return thread->add(delayMs, target, periodic);
}

bool removeTimerEvent(uint32_t eventId) noexcept
{
    TimerThread *thread = processWide<TimerThread>();
    return thread && thread->remove(eventId);
}

}  // namespace tollan::platform::posix
