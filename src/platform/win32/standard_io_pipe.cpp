// The standard I/O pipe on Windows: the client end of the development
// environment's named pipe, written raw.
#include "platform/standard_io_pipe.h"

#include <windows.h>

#include <algorithm>
#include <mutex>

namespace tollan::platform {
namespace {

std::mutex pipeLock;
HANDLE pipe = INVALID_HANDLE_VALUE;

// The pipe, opened now when it is not open yet; INVALID_HANDLE_VALUE while no
// server has made it. The caller holds pipeLock.
HANDLE openedPipe() noexcept
{
    if (pipe != INVALID_HANDLE_VALUE) return pipe;
    char name[kStandardIoPipeNameSize];
    standardIoPipeName(GetCurrentProcessId(), name);
    pipe = CreateFileA(name, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    return pipe;
}

}  // namespace

void writeStandardIoPipe(int descriptor, const void *bytes, size_t count) noexcept
{
    if ((descriptor != 1 && descriptor != 2) || bytes == nullptr || count == 0 || !standardIoPipeOn()) return;
    const DWORD savedError = GetLastError();
    {
        std::lock_guard hold(pipeLock);
        const HANDLE target = standardIoPipeOn() ? openedPipe() : INVALID_HANDLE_VALUE;
        if (target != INVALID_HANDLE_VALUE) {
            DWORD written = 0;
            WriteFile(target, bytes, static_cast<DWORD>(std::min<size_t>(count, MAXDWORD)), &written,
                      nullptr);
        }
    }
    SetLastError(savedError);
}

void closeStandardIoPipe() noexcept
{
    const DWORD savedError = GetLastError();
    {
        std::lock_guard hold(pipeLock);
        if (pipe != INVALID_HANDLE_VALUE) {
            FlushFileBuffers(pipe);
            CloseHandle(pipe);
            pipe = INVALID_HANDLE_VALUE;
        }
    }
    SetLastError(savedError);
}

}  // namespace tollan::platform
