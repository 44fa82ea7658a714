// Events: auto- or manual-reset, unnamed (process-local) or named (visible to
// other processes of the same user, such as the debugger's monitor).
#pragma once

#include <cstdint>
#include <memory>

namespace tollan::platform {

enum class WaitResult { signalled, timedOut, failed };

inline constexpr uint32_t kWaitForever = 0xFFFFFFFFu;

class Event {
public:
    virtual ~Event() = default;
    // Creates an event, or opens the existing one of that name. name may be
    // null for a process-local event. Returns null on failure.
    static std::unique_ptr<Event> create(bool manualReset, bool initiallySet, const char *name) noexcept;
    // Opens an existing named event; null when there is none.
    static std::unique_ptr<Event> open(const char *name) noexcept;

    virtual void set() noexcept = 0;
    virtual void reset() noexcept = 0;
    // Waits up to timeoutMs (kWaitForever: no limit). An auto-reset event is
    // reset by the wait that it releases.
    virtual WaitResult wait(uint32_t timeoutMs) noexcept = 0;
};

// A mutex shared between processes by name (CreateMutexA's model).
class NamedMutex {
public:
    virtual ~NamedMutex() = default;
    // Creates or opens the mutex; null on failure.
    static std::unique_ptr<NamedMutex> create(const char *name) noexcept;
    virtual WaitResult acquire(uint32_t timeoutMs) noexcept = 0;
    virtual void release() noexcept = 0;
};

}  // namespace tollan::platform
