// Run-time loading with LoadLibraryA.
#include "platform/dynamic_library.h"

#include <windows.h>

namespace tollan::platform {

void *loadLibrary(const char *windowsName) noexcept
{
    if (!windowsName || !*windowsName) return nullptr;
    return LoadLibraryA(windowsName);
}

void *librarySymbol(void *library, const char *name) noexcept
{
    if (!library || !name) return nullptr;
    return reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(library), name));
}

void unloadLibrary(void *library) noexcept
{
    if (library) FreeLibrary(static_cast<HMODULE>(library));
}

}  // namespace tollan::platform
