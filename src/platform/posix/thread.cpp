// Threads on pthreads. Priorities in the Windows scale become nice values of
// the thread; raising one needs a privilege that most users lack, and then
// setPriority reports false and leaves the thread as it was.
#include "platform/thread.h"

#include <pthread.h>
#include <sys/resource.h>
#include <sys/single_threaded.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <new>

namespace tollan::platform {

namespace {

// The nice value that stands in for each Windows priority; false for a
// value that is not a Windows priority.
bool niceForPriority(int priority, int *nice) noexcept
{
    switch (priority) {
        case -15:
            *nice = 19;
            return true;  // idle
        case -2:
            *nice = 10;
            return true;  // lowest
        case -1:
            *nice = 5;
            return true;  // below normal
        case 0:
            *nice = 0;
            return true;  // normal
        case 1:
            *nice = -5;
            return true;  // above normal
        case 2:
            *nice = -10;
            return true;  // highest
        case 15:
            *nice = -20;
            return true;  // time critical
        default:
            return false;
    }
}

class PosixThread final : public Thread {
public:
    PosixThread(Entry entry, void *argument) noexcept : entry_(entry), argument_(argument) {}
    ~PosixThread() override { join(); }

    bool launch() noexcept
    {
        if (pthread_create(&handle_, nullptr, &PosixThread::run, this) != 0) return false;
        running_ = true;
        // id() is answerable as soon as start() returns.
        tid_.wait(0, std::memory_order_acquire);
        return true;
    }

    void join() noexcept override
    {
        if (!running_) return;
        running_ = false;
        if (pthread_equal(handle_, pthread_self())) {
            pthread_detach(handle_);  // the thread is dropping its own object
        } else {
            pthread_join(handle_, nullptr);
        }
    }

    uint32_t id() const noexcept override { return tid_.load(std::memory_order_acquire); }

    bool setPriority(int priority) noexcept override
    {
        int nice = 0;
        if (!niceForPriority(priority, &nice)) return false;
        if (setpriority(PRIO_PROCESS, static_cast<id_t>(id()), nice) != 0) return false;
        priority_ = priority;
        return true;
    }

    int priority() const noexcept override { return priority_; }

private:
    static void *run(void *self) noexcept
    {
        auto *thread = static_cast<PosixThread *>(self);
        thread->tid_.store(static_cast<uint32_t>(gettid()), std::memory_order_release);
        thread->tid_.notify_all();
        thread->entry_(thread->argument_);
        return nullptr;
    }

    Entry entry_;
    void *argument_;
    pthread_t handle_{};
    bool running_ = false;
    std::atomic<uint32_t> tid_{0};
    int priority_ = kThreadPriorityNormal;
};

}  // namespace

std::unique_ptr<Thread> Thread::start(Entry entry, void *argument) noexcept
{
    if (!entry) return nullptr;
    std::unique_ptr<PosixThread> thread(new (std::nothrow) PosixThread(entry, argument));
    if (!thread || !thread->launch()) return nullptr;
    return thread;
}

namespace {

// gettid is a system call, and a slow one in a virtual machine; every
// thread asks once. A child of fork() has a new id for the same thread.
thread_local uint32_t cachedThreadId = 0;

void forgetThreadIdAfterFork() noexcept
{
    cachedThreadId = 0;
}

}  // namespace

uint32_t currentThreadId() noexcept
{
    if (cachedThreadId == 0) {
        static const bool watchingForks = pthread_atfork(nullptr, nullptr, forgetThreadIdAfterFork) == 0;
        (void)watchingForks;
        cachedThreadId = static_cast<uint32_t>(gettid());
    }
    return cachedThreadId;
}

int currentThreadPriority() noexcept
{
    errno = 0;
    const int nice = getpriority(PRIO_PROCESS, static_cast<id_t>(currentThreadId()));
    if (nice == -1 && errno != 0) return kThreadPriorityNormal;
    // The Windows priority whose nice value is nearest.
    constexpr int kPriorities[] = {-15, -2, -1, 0, 1, 2, 15};
    int best = kThreadPriorityNormal;
    int bestDistance = 1000;
    for (int priority : kPriorities) {
        int value = 0;
        niceForPriority(priority, &value);
        const int distance = value > nice ? value - nice : nice - value;
        if (distance < bestDistance) {
            best = priority;
            bestDistance = distance;
        }
    }
    return best;
}

uint32_t currentProcessId() noexcept
{
    return static_cast<uint32_t>(getpid());
}

bool processHasOnlyOneThread() noexcept
{
    return __libc_single_threaded != 0;
}

void sleepMs(uint32_t ms) noexcept
{
    timespec left{static_cast<time_t>(ms / 1000), static_cast<long>(ms % 1000) * 1000000L};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

}  // namespace tollan::platform
