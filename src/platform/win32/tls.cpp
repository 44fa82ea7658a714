// Thread-local slots are the system's TLS indexes.
#include "platform/tls.h"

#include <windows.h>

#include <atomic>

#include "platform/win32/thread_exit.h"

namespace tollan::platform {

namespace {
std::atomic<ThreadExitHandler> exitHandler{nullptr};
}

bool tlsAlloc(TlsIndex *index) noexcept
{
    const DWORD allocated = TlsAlloc();
    if (allocated == TLS_OUT_OF_INDEXES) return false;
    *index = allocated;
    return true;
}

void tlsFree(TlsIndex index) noexcept
{
    TlsFree(index);
}

void *tlsGet(TlsIndex index) noexcept
{
    return TlsGetValue(index);
}

bool tlsSet(TlsIndex index, void *value) noexcept
{
    return TlsSetValue(index, value) != 0;
}

ThreadExitHandler setThreadExitHandler(ThreadExitHandler handler) noexcept
{
    return exitHandler.exchange(handler, std::memory_order_acq_rel);
}

void armThreadExit() noexcept {}

// The loader stops sending thread detach to a library it unloads.
void stopThreadExitNotifications() noexcept {}

void win32::runThreadExitHandler() noexcept
{
    if (auto handler = exitHandler.load(std::memory_order_acquire)) handler();
}

}  // namespace tollan::platform
