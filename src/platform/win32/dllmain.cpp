// TOLLAN.dll's entry: the loader's notifications drive the engine. A failed
// process attach returns FALSE, which makes the loader refuse the library.
#include <windows.h>

#include "engine/dll_entry.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved)
{
    switch (reason) {
        case DLL_PROCESS_ATTACH:
            return tollan::engine::processAttach(instance) != 0 ? TRUE : FALSE;
        case DLL_PROCESS_DETACH:
            // A non-null reserved pointer: the process is ending and the system
            // has already stopped its other threads.
            return tollan::engine::processDetach(reserved != nullptr) != 0 ? TRUE : FALSE;
        case DLL_THREAD_DETACH:
            return tollan::engine::threadDetach() != 0 ? TRUE : FALSE;
        default:  // DLL_THREAD_ATTACH: threads get their data on first use
            return TRUE;
    }
}
