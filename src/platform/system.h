// Facts about the process and the system, and the debugger-facing output.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tollan::platform {

// RtlGetVersion's major and minor version (uname's kernel release elsewhere).
bool osVersion(uint32_t *major, uint32_t *minor) noexcept;
// GetModuleHandle(NULL): the main program's handle; null on failure.
void *mainProgramHandle() noexcept;
// GetModuleFileNameA of the main program into buffer; the length, 0 on failure.
size_t mainProgramFileName(char *buffer, size_t size) noexcept;
// wShowWindow from the start-up information when given, else 10 (SW_SHOWDEFAULT).
int startupShowWindowCode() noexcept;
// RegisterWindowMessageA; process-local ids from 0xC000 up where there are no windows.
uint32_t registerWindowMessage(const char *name) noexcept;
// The text of a system error code (FormatMessageA / strerror_r).
void systemErrorText(int code, char *buffer, size_t size) noexcept;
// MessageBeep(0); the terminal bell elsewhere.
int beep() noexcept;
// Sets, changes or (with "NAME=") removes a variable of the process's
// environment from a "NAME=value" setting, copying it (_putenv; setenv and
// unsetenv elsewhere). False for a setting without a name or '=', or
// without memory; errno says why.
bool putEnvironmentSetting(const char *setting) noexcept;
// ExitProcess.
[[noreturn]] void exitProcess(int code) noexcept;
// Has `handler` run in the child process after every fork() (there is no
// fork on Windows). Set once per load of the library.
void setForkChildHandler(void (*handler)()) noexcept;

}  // namespace tollan::platform
