// Threads the library starts, and facts about the calling thread.
#pragma once

#include <cstdint>
#include <memory>

namespace tollan::platform {

// Thread priorities in the Windows scale (THREAD_PRIORITY_*).
inline constexpr int kThreadPriorityNormal = 0;
inline constexpr int kThreadPriorityHighest = 2;
inline constexpr int kThreadPriorityTimeCritical = 15;

class Thread {
public:
    virtual ~Thread() = default;  // joins when still running
    using Entry = void (*)(void *argument);
    // Starts a thread; null when it cannot be created.
    static std::unique_ptr<Thread> start(Entry entry, void *argument) noexcept;

    virtual void join() noexcept = 0;
    virtual uint32_t id() const noexcept = 0;
    // Best effort where the system does not allow it (unprivileged POSIX): returns false.
    virtual bool setPriority(int priority) noexcept = 0;
    virtual int priority() const noexcept = 0;
};

uint32_t currentThreadId() noexcept;
// The calling thread's priority in the Windows scale.
int currentThreadPriority() noexcept;
uint32_t currentProcessId() noexcept;
// True while the process has never had a second thread, so that nothing can
// run beside the caller (glibc's __libc_single_threaded). Once false it stays
// false. Windows gives no such promise: always false there.
bool processHasOnlyOneThread() noexcept;
// Gives up the processor for at least ms milliseconds.
void sleepMs(uint32_t ms) noexcept;

}  // namespace tollan::platform
