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

namespace {

// The module that holds `address`, or `address` itself when it is a module handle.
HMODULE moduleOf(const void *address) noexcept
{
    HMODULE module = nullptr;
    if (GetModuleHandleExA(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            static_cast<LPCSTR>(address), &module))
        return module;
    return nullptr;
}

}  // namespace

void *loadModuleContaining(const void *address) noexcept
{
    char name[MAX_PATH];
    if (moduleFileName(address, name, sizeof name) == 0) return nullptr;
    return LoadLibraryA(name);
}

size_t moduleFileName(const void *address, char *buffer, size_t size) noexcept
{
    if (buffer == nullptr || size == 0) return 0;
    buffer[0] = '\0';
    HMODULE module = address != nullptr ? moduleOf(address) : nullptr;
    if (module == nullptr) return 0;
    const DWORD capacity = size > MAXDWORD ? MAXDWORD : static_cast<DWORD>(size);
    const DWORD length = GetModuleFileNameA(module, buffer, capacity);
    if (length == 0 || length >= capacity) {
        buffer[0] = '\0';
        return 0;
    }
    return length;
}

}  // namespace tollan::platform
