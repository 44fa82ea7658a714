#include "platform/win32/wait_handle.h"

namespace tollan::platform::win32 {

static_assert(kWaitForever == INFINITE);

WaitResult waitHandle(HANDLE handle, uint32_t timeoutMs) noexcept
{
    switch (WaitForSingleObject(handle, timeoutMs)) {
        case WAIT_OBJECT_0:
        case WAIT_ABANDONED:
            return WaitResult::signalled;
        case WAIT_TIMEOUT:
            return WaitResult::timedOut;
        default:
            return WaitResult::failed;
    }
}

}  // namespace tollan::platform::win32
