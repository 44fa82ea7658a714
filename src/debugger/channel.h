// The debug channel's state and the steps that other parts of the debugger
// link share: connecting, the shared information block, the hooks, the
// break routine and the debug event texts.
#pragma once

#include <cstdint>

#include "debugger/backend.h"
#include "debugger/library.h"

namespace tollan::debugger {

// Object names of the local transport: base text and process id, "%s%x".
void localObjectName(char *buffer, size_t size, const char *base) noexcept;

// The connection logic of __ZOR_Debug_Connect; `silent` skips the connected
// hook (start-up connects before the hooks exist).
int32_t connectChannel(void *module, intptr_t argument, int32_t port) noexcept;
// The transport in use now (the local one until another is chosen).
BackendTable &currentBackend() noexcept;
// Whether a remote session is configured (a remote debugger address is
// stored) and is not up.
bool remoteSessionDown() noexcept;

// The shared information block, or null when no debugger made one.
unsigned char *sharedInfoBlock() noexcept;
// The debugger's protocol level (0 without a block).
uint32_t protocolLevel() noexcept;

// Raises a break: the routine that stops the calling thread in the debugger.
void breakIntoDebugger() noexcept;

// Flags the debugger sets through the shared block.
int32_t simulateShuttingDownRequested() noexcept;
bool startupLibraryRefused() noexcept;

}  // namespace tollan::debugger
