// Threads are kernel threads.
#include "platform/thread.h"

#include <windows.h>

#include <new>

#include "platform/win32/wait_handle.h"

namespace tollan::platform {

namespace {

bool isWindowsPriority(int priority) noexcept
{
    switch (priority) {
        case THREAD_PRIORITY_IDLE:
        case THREAD_PRIORITY_LOWEST:
        case THREAD_PRIORITY_BELOW_NORMAL:
        case THREAD_PRIORITY_NORMAL:
        case THREAD_PRIORITY_ABOVE_NORMAL:
        case THREAD_PRIORITY_HIGHEST:
        case THREAD_PRIORITY_TIME_CRITICAL:
            return true;
        default:
            return false;
    }
}

class KernelThread final : public Thread {
public:
    KernelThread(Entry entry, void *argument) noexcept : entry_(entry), argument_(argument) {}
    ~KernelThread() override
    {
        join();
        if (handle_) CloseHandle(handle_);
    }

    bool launch() noexcept
    {
        DWORD id = 0;
        handle_ = CreateThread(nullptr, 0, &KernelThread::run, this, 0, &id);
        id_ = id;
        return handle_ != nullptr;
    }

    void join() noexcept override
    {
        // A thread dropping its own object cannot wait for itself.
        if (handle_ && id_ != GetCurrentThreadId()) WaitForSingleObject(handle_, INFINITE);
    }

    uint32_t id() const noexcept override { return id_; }

    bool setPriority(int priority) noexcept override
    {
        return isWindowsPriority(priority) && SetThreadPriority(handle_, priority) != 0;
    }

    int priority() const noexcept override
    {
        const int priority = GetThreadPriority(handle_);
        return priority == THREAD_PRIORITY_ERROR_RETURN ? kThreadPriorityNormal : priority;
    }

private:
    static DWORD WINAPI run(void *self) noexcept
    {
        auto *thread = static_cast<KernelThread *>(self);
        thread->entry_(thread->argument_);
        return 0;
    }

    Entry entry_;
    void *argument_;
    HANDLE handle_ = nullptr;
    uint32_t id_ = 0;
};

}  // namespace

std::unique_ptr<Thread> Thread::start(Entry entry, void *argument) noexcept
{
    if (!entry) return nullptr;
    std::unique_ptr<KernelThread> thread(new (std::nothrow) KernelThread(entry, argument));
    if (!thread || !thread->launch()) return nullptr;
    return thread;
}

int currentThreadPriority() noexcept
{
    const int priority = GetThreadPriority(GetCurrentThread());
    return priority == THREAD_PRIORITY_ERROR_RETURN ? kThreadPriorityNormal : priority;
}

uint32_t currentThreadId() noexcept
{
    return GetCurrentThreadId();
}

uint32_t currentProcessId() noexcept
{
    return GetCurrentProcessId();
}

bool processHasOnlyOneThread() noexcept
{
    return false;
}

void sleepMs(uint32_t ms) noexcept
{
    Sleep(ms);
}

}  // namespace tollan::platform
