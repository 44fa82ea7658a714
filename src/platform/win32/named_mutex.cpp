// Named mutexes are kernel mutexes.
#include <windows.h>

#include <new>

#include "platform/event.h"
#include "platform/win32/wait_handle.h"

namespace tollan::platform {

namespace {

class KernelMutex final : public NamedMutex {
public:
    explicit KernelMutex(HANDLE handle) noexcept : handle_(handle) {}
    WaitResult acquire(uint32_t timeoutMs) noexcept override
    {
        return win32::waitHandle(handle_.get(), timeoutMs);
    }
    void release() noexcept override { ReleaseMutex(handle_.get()); }

private:
    win32::OwnedHandle handle_;
};

}  // namespace

std::unique_ptr<NamedMutex> NamedMutex::create(const char *name) noexcept
{
    if (!name || !*name) return nullptr;  // the POSIX side has no unnamed ones either
    HANDLE handle = CreateMutexA(nullptr, FALSE, name);
    if (!handle) return nullptr;
    std::unique_ptr<NamedMutex> mutex(new (std::nothrow) KernelMutex(handle));
    if (!mutex) CloseHandle(handle);
    return mutex;
}

}  // namespace tollan::platform
