// The watching thread sleeps on a condition variable bound to the monotonic
// clock until the earliest armed deadline, and keeps that time in wakeAtNs_
// so that a write arming a later deadline need not wake it. While it scans
// the devices, wakeAtNs_ says "never": a write that arms meanwhile takes the
// lock to wake it, and the lock is only free again once the thread waits.
#include "platform/posix/write_deadlines.h"

#include <algorithm>
#include <vector>

#include "platform/posix/deadline.h"
#include "platform/posix/waiting_thread.h"

namespace tollan::platform::posix {

namespace {

constexpr int64_t kNanosPerMs = 1000000;

class DeadlineWatcher final : public WaitingThread {
public:
    bool watch(WriteDeadline *device) noexcept
    {
        pthread_mutex_lock(&mutex_);
        bool added = true;
        try {
            watched_.push_back(device);
        } catch (...) {
            added = false;
        }
        pthread_mutex_unlock(&mutex_);
        return added;
    }

    void unwatch(WriteDeadline *device) noexcept
    {
        pthread_mutex_lock(&mutex_);
        watched_.erase(std::remove(watched_.begin(), watched_.end(), device), watched_.end());
        // With none left the thread leaves.
        if (watched_.empty()) wake();
        pthread_mutex_unlock(&mutex_);
    }

    bool arm(WriteDeadline *device, uint32_t timeoutMs) noexcept
    {
        const int64_t due = monotonicNowNs() + static_cast<int64_t>(timeoutMs) * kNanosPerMs;
        device->dueNs.store(due);
        if (due >= wakeAtNs_.load()) return true;
        pthread_mutex_lock(&mutex_);
        const bool armed = wakeOrStart();
        if (!armed) device->dueNs.store(0);
        pthread_mutex_unlock(&mutex_);
        return armed;
    }

private:
    // Ends the writes whose deadline has passed, under the lock, so that a
    // device that is being closed waits until its call is over.
    void run() noexcept override
    {
        while (!watched_.empty()) {
            wakeAtNs_.store(kNever);
            const int64_t now = monotonicNowNs();
            int64_t next = kNever;
            for (WriteDeadline *device : watched_) {
                int64_t due = device->dueNs.load();
                if (due == 0) continue;
                if (due > now) {
                    next = std::min(next, due);
                } else if (device->dueNs.compare_exchange_strong(due, 0)) {
                    device->deadlinePassed();
                }
            }
            wakeAtNs_.store(next);
            sleepUntil(next);
        }
        wakeAtNs_.store(kNever);
    }

    // A child of fork() starts the thread again at its first armed deadline,
    // for the devices it inherited.
    void forgetInChild() noexcept override { wakeAtNs_.store(kNever); }

    std::vector<WriteDeadline *> watched_;
    // When the thread wakes next; kNever while it scans, waits for no
    // deadline, or is not running.
    std::atomic<int64_t> wakeAtNs_{kNever};
};

}  // namespace

bool watchWriteDeadlines(WriteDeadline *device) noexcept
{
    DeadlineWatcher *const thread = processWide<DeadlineWatcher>();
    return thread != nullptr && thread->watch(device);
}

void unwatchWriteDeadlines(WriteDeadline *device) noexcept
{
    if (DeadlineWatcher *const thread = processWide<DeadlineWatcher>()) thread->unwatch(device);
}

bool armWriteDeadline(WriteDeadline *device, uint32_t timeoutMs) noexcept
{
    DeadlineWatcher *const thread = processWide<DeadlineWatcher>();
    return thread != nullptr && thread->arm(device, timeoutMs);
}

}  // namespace tollan::platform::posix
