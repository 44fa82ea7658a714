// Thread-local slots (TlsAlloc's model) and the thread-exit notification.
#pragma once

#include <cstdint>

namespace tollan::platform {

using TlsIndex = uint32_t;

// Obtains a new slot; false when the system has none left.
bool tlsAlloc(TlsIndex *index) noexcept;
void tlsFree(TlsIndex index) noexcept;
void *tlsGet(TlsIndex index) noexcept;
bool tlsSet(TlsIndex index, void *value) noexcept;

// The engine's thread-detach handler. On Windows DllMain calls it for every
// thread that ends; elsewhere it runs at the exit of every thread that called
// armThreadExit() (the thread-variable block does so when it is created).
// Returns the handler it replaces.
using ThreadExitHandler = void (*)();
ThreadExitHandler setThreadExitHandler(ThreadExitHandler handler) noexcept;
void armThreadExit() noexcept;
// The library is going away: threads that end from now on no longer call
// into it (elsewhere than Windows the system would call the handler in code
// that is no longer there), and the calling thread's own storage is freed.
// Returns once no thread is still running its exit handling. Threads still
// alive keep their storage, as on Windows. Slots can be used again after it.
void stopThreadExitNotifications() noexcept;

}  // namespace tollan::platform
