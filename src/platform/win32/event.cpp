// Events are kernel events; a name makes them visible to other processes.
#include "platform/event.h"

#include <windows.h>

#include <new>

#include "platform/win32/wait_handle.h"

namespace tollan::platform {

namespace {

class KernelEvent final : public Event {
public:
    explicit KernelEvent(HANDLE handle) noexcept : handle_(handle) {}
    void set() noexcept override { SetEvent(handle_.get()); }
    void reset() noexcept override { ResetEvent(handle_.get()); }
    WaitResult wait(uint32_t timeoutMs) noexcept override
    {
        return win32::waitHandle(handle_.get(), timeoutMs);
    }

private:
    win32::OwnedHandle handle_;
};

std::unique_ptr<Event> wrap(HANDLE handle) noexcept
{
    if (!handle) return nullptr;
    std::unique_ptr<Event> event(new (std::nothrow) KernelEvent(handle));
    if (!event) CloseHandle(handle);
    return event;
}

}  // namespace

std::unique_ptr<Event> Event::create(bool manualReset, bool initiallySet, const char *name) noexcept
{
    return wrap(CreateEventA(nullptr, manualReset, initiallySet, name));
}

std::unique_ptr<Event> Event::open(const char *name) noexcept
{
    if (!name) return nullptr;
    return wrap(OpenEventA(EVENT_MODIFY_STATE | SYNCHRONIZE, FALSE, name));
}

}  // namespace tollan::platform
