// WOW64 functions, looked up by name in kernel32 on first use: systems
// without WOW64 do not have them.
#include "platform/wow64.h"

#include <windows.h>

namespace tollan::platform {
namespace {

template <typename Function>
Function kernel32Function(const char *name) noexcept
{
    HMODULE kernel32 = GetModuleHandleA("kernel32");
    if (kernel32 == nullptr) return nullptr;
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(kernel32, name)));
}

}  // namespace

bool enableFileSystemRedirection(bool enable) noexcept
{
    using Enable = BOOLEAN(WINAPI *)(BOOLEAN);
    static const Enable function = kernel32Function<Enable>("Wow64EnableWow64FsRedirection");
    return function != nullptr && function(enable ? TRUE : FALSE) != FALSE;
}

bool isWow64Process() noexcept
{
    using Query = BOOL(WINAPI *)(HANDLE, PBOOL);
    static const Query function = kernel32Function<Query>("IsWow64Process");
    BOOL wow64 = FALSE;
    return function != nullptr && function(GetCurrentProcess(), &wow64) && wow64;
}

}  // namespace tollan::platform
