// The small start-up steps that belong to the engine frame itself.
#pragma once

namespace tollan::engine {

// Remembers the loading thread as the main thread.
bool QXInitMainThreadId() noexcept;
// Remembers the host program's handle and file name.
bool rememberHostModule() noexcept;
// Sets the async-protection flag once the locks it covers are set up; the
// flag makes WExitApp act at shutdown.
bool InitAsyncAndMTProtection() noexcept;
void endAsyncProtection() noexcept;
// Tells the rest of the library that the run-time libraries are usable.
bool markRuntimeLibrariesReady() noexcept;

}  // namespace tollan::engine
