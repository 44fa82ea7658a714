// Waiting on a kernel object.
#pragma once

#include <windows.h>

#include <cstdint>

#include "platform/event.h"

namespace tollan::platform::win32 {

// WaitForSingleObject with kWaitForever as INFINITE. An abandoned mutex counts
// as acquired: its new owner has it.
WaitResult waitHandle(HANDLE handle, uint32_t timeoutMs) noexcept;

// Closes a kernel handle when it goes out of scope.
class OwnedHandle {
public:
    explicit OwnedHandle(HANDLE handle) noexcept : handle_(handle) {}
    ~OwnedHandle()
    {
        if (handle_) CloseHandle(handle_);
    }
    OwnedHandle(const OwnedHandle &) = delete;
    OwnedHandle &operator=(const OwnedHandle &) = delete;
    HANDLE get() const noexcept { return handle_; }

private:
    HANDLE handle_;
};

}  // namespace tollan::platform::win32
