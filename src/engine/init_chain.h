// The nested start-up chain below DllMain: InitRTDll -> WInitRTDll -> WinMain
// -> WInitApp, WMain. Each runs on the loading thread during process attach.
#pragma once

#include <cstdint>

namespace tollan::engine {

// True when WInitRTDll succeeded.
bool InitRTDll() noexcept;
// Gathers the host program's handle and show-window code and calls WinMain.
bool WInitRTDll() noexcept;
// Reads the platform, names the application, splits commandLine (written
// into), registers the window messages, then runs WInitApp and WMain. True
// only when both returned 0.
bool WinMain(void *instance, void *previousInstance, char *commandLine, int32_t showWindow) noexcept;
// Runs the initApp rows; 0, or the failing row's code.
int32_t WInitApp(int argc, char **argv) noexcept;
// Runs the runtimeLibraries rows; 0, or the failing row's code.
int32_t WMain() noexcept;

}  // namespace tollan::engine
