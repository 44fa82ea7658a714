// The debugger's facilities from kernel32: IsDebuggerPresent,
// OutputDebugStringA, DebugBreak and the debugger's named pipe.
#include "platform/debugger.h"

#include <windows.h>

#include <atomic>
#include <cstring>
#include <mutex>

namespace tollan::platform {
namespace {

std::mutex pipeLock;
HANDLE pipe = INVALID_HANDLE_VALUE;

}  // namespace

bool debuggerPresent() noexcept
{
    return IsDebuggerPresent() != FALSE;
}

void debugEventText(const char *text) noexcept
{
    if (text != nullptr) OutputDebugStringA(text);
}

void debugBreak(const void *) noexcept
{
    DebugBreak();
}

int32_t openDebugOutputPipe(const char *name) noexcept
{
    std::lock_guard hold(pipeLock);
    if (pipe != INVALID_HANDLE_VALUE) return -71;
    HANDLE opened = CreateFileA(name, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (opened == INVALID_HANDLE_VALUE) return -70;
    DWORD mode = PIPE_READMODE_BYTE | PIPE_WAIT;
    SetNamedPipeHandleState(opened, &mode, nullptr, nullptr);
    pipe = opened;
    return 0;
}

void closeDebugOutputPipe() noexcept
{
    std::lock_guard hold(pipeLock);
    if (pipe == INVALID_HANDLE_VALUE) return;
    FlushFileBuffers(pipe);
    CloseHandle(pipe);
    pipe = INVALID_HANDLE_VALUE;
}

bool debugOutputPipeOpen() noexcept
{
    std::lock_guard hold(pipeLock);
    return pipe != INVALID_HANDLE_VALUE;
}

void debugOutput(const char *text) noexcept
{
    if (text == nullptr) return;
    std::lock_guard hold(pipeLock);
    if (pipe == INVALID_HANDLE_VALUE) {
        OutputDebugStringA(text);
        return;
    }
    DWORD written = 0;
    WriteFile(pipe, text, static_cast<DWORD>(std::strlen(text)), &written, nullptr);
}

uint32_t lastSystemError() noexcept
{
    return GetLastError();
}

void setLastSystemError(uint32_t error) noexcept
{
    SetLastError(error);
}

namespace {

// The guarded call's recovery point (__builtin_setjmp's five words).
thread_local void *recovery[5];
thread_local bool guarding = false;

LONG CALLBACK onException(EXCEPTION_POINTERS *exception) noexcept
{
    if (!guarding) return EXCEPTION_CONTINUE_SEARCH;
    switch (exception->ExceptionRecord->ExceptionCode) {
        case EXCEPTION_ACCESS_VIOLATION:
        case EXCEPTION_ILLEGAL_INSTRUCTION:
        case EXCEPTION_PRIV_INSTRUCTION:
        case EXCEPTION_INT_DIVIDE_BY_ZERO:
        case EXCEPTION_DATATYPE_MISALIGNMENT:
        case EXCEPTION_IN_PAGE_ERROR:
            guarding = false;
            __builtin_longjmp(recovery, 1);
        default:
            return EXCEPTION_CONTINUE_SEARCH;
    }
}

}  // namespace

bool callGuarded(void (*function)(void *), void *argument) noexcept
{
    if (function == nullptr) return false;
    static PVOID const handler = AddVectoredExceptionHandler(1, onException);
    if (handler == nullptr || guarding) {
        // Nested, or no handler: unguarded is all that is left.
        function(argument);
        return true;
    }
    if (__builtin_setjmp(recovery) != 0) return false;
    guarding = true;
    function(argument);
    guarding = false;
    return true;
}

}  // namespace tollan::platform
