// The thread-exit notification on Windows comes from the loader: DllMain,
// on DLL_THREAD_DETACH (reason 3), calls runThreadExitHandler() on the ending
// thread. armThreadExit() has nothing to do here, since the loader tells the
// library about every thread.
#pragma once

namespace tollan::platform::win32 {

// Calls the handler given to setThreadExitHandler, when there is one.
void runThreadExitHandler() noexcept;

}  // namespace tollan::platform::win32
