// Process and system facts from kernel32, user32 and ntdll.
#include "platform/system.h"

#include <windows.h>

#include <cerrno>
#include <cstdlib>

#include <cstdio>
#include <cstring>

namespace tollan::platform {

bool putEnvironmentSetting(const char *setting) noexcept
{
    const char *equals = std::strchr(setting, '=');
    if (equals == nullptr || equals == setting) {
        errno = EINVAL;
        return false;
    }
    return _putenv(setting) == 0;
}

bool osVersion(uint32_t *major, uint32_t *minor) noexcept
{
    if (!major || !minor) return false;
    // RtlGetVersion tells the truth where GetVersionEx answers by the manifest.
    using RtlGetVersionFunction = LONG(WINAPI *)(OSVERSIONINFOW *);
    static_assert(sizeof(OSVERSIONINFOW) == 276);
    HMODULE ntdll = GetModuleHandleA("ntdll");
    if (!ntdll) return false;
    FARPROC found = GetProcAddress(ntdll, "RtlGetVersion");
    if (!found) return false;
    auto rtlGetVersion = reinterpret_cast<RtlGetVersionFunction>(reinterpret_cast<void (*)()>(found));
    OSVERSIONINFOW info{};
    info.dwOSVersionInfoSize = sizeof info;
    if (rtlGetVersion(&info) != 0) return false;
    *major = info.dwMajorVersion;
    *minor = info.dwMinorVersion;
    return true;
}

void *mainProgramHandle() noexcept
{
    return GetModuleHandleA(nullptr);
}

size_t mainProgramFileName(char *buffer, size_t size) noexcept
{
    if (!buffer || size == 0) return 0;
    const DWORD capacity = size > MAXDWORD ? MAXDWORD : static_cast<DWORD>(size);
    if (GetModuleFileNameA(nullptr, buffer, capacity) == 0) {
        buffer[0] = '\0';
        return 0;
    }
    buffer[capacity - 1] = '\0';  // a name cut short is not always terminated
    return std::strlen(buffer);
}

int startupShowWindowCode() noexcept
{
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    GetStartupInfoA(&startup);
    return (startup.dwFlags & STARTF_USESHOWWINDOW) ? startup.wShowWindow : SW_SHOWDEFAULT;
}

uint32_t registerWindowMessage(const char *name) noexcept
{
    if (!name || !*name) return 0;
    return RegisterWindowMessageA(name);
}

void systemErrorText(int code, char *buffer, size_t size) noexcept
{
    if (!buffer || size == 0) return;
    char text[512];
    DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                  static_cast<DWORD>(code), 0, text, sizeof text, nullptr);
    if (length == 0) {
        std::snprintf(buffer, size, "Unknown error %d", code);
        return;
    }
    while (length > 0 && (text[length - 1] == '\n' || text[length - 1] == '\r')) --length;
    text[length] = '\0';
    std::snprintf(buffer, size, "%s", text);
}

int beep() noexcept
{
    return MessageBeep(0);
}

void exitProcess(int code) noexcept
{
    ExitProcess(static_cast<UINT>(code));
}

void setForkChildHandler(void (*)()) noexcept {}

}  // namespace tollan::platform
