// The small start-up steps that belong to the engine frame itself.
#pragma once

namespace tollan::engine {

// Remembers the loading thread as the main thread.
bool QXInitMainThreadId() noexcept;
// Remembers the host program's handle and file name.
bool rememberHostModule() noexcept;
// The debugger link's steps; a failure marks the start-up as failed.
bool initializeDebugLink() noexcept;
bool initializeDebugChannel() noexcept;
// The basic type nodes of run-time checking; from here on the debugger
// link reports its run-time errors through run-time error reporting.
bool startRunTimeChecking() noexcept;
// Makes the C library's four shared locks, then sets the async-protection
// flag, which makes WExitApp act at shutdown. False when a lock cannot be made.
bool InitAsyncAndMTProtection() noexcept;
// Releases the locks in the order they were made and clears the flag.
void endAsyncProtection() noexcept;
// Records how the program ended (-132 after a user break, else -19); the
// first step of the shutdown chain.
void recordExitStatus() noexcept;
// Tells the rest of the library that the run-time libraries are usable.
bool markRuntimeLibrariesReady() noexcept;

}  // namespace tollan::engine
