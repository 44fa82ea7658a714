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

}  // namespace tollan::platform
