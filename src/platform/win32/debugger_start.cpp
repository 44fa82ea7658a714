// Starting the development environment's program as this process's debugger.
#include <windows.h>

#include <cstdio>

#include "platform/debugger.h"

namespace tollan::platform {
namespace {

class CreatedDebugger final : public StartedDebugger {
public:
    explicit CreatedDebugger(HANDLE process) noexcept : process_(process) {}
    ~CreatedDebugger() override { CloseHandle(process_); }
    CreatedDebugger(const CreatedDebugger &) = delete;
    CreatedDebugger &operator=(const CreatedDebugger &) = delete;

    bool running() noexcept override { return WaitForSingleObject(process_, 0) == WAIT_TIMEOUT; }

private:
    HANDLE process_;
};

}  // namespace

std::unique_ptr<StartedDebugger> startDebugger(const char *path) noexcept
{
    if (path == nullptr || path[0] == '\0') return nullptr;
    char commandLine[4096];
    const int length = std::snprintf(commandLine, sizeof commandLine, "\"%s\" -p0x%x", path,
                                     static_cast<unsigned>(GetCurrentProcessId()));
    if (length < 0 || static_cast<size_t>(length) >= sizeof commandLine) return nullptr;
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (!CreateProcessA(nullptr, commandLine, nullptr, nullptr, FALSE, CREATE_DEFAULT_ERROR_MODE, nullptr,
                        nullptr, &startup, &started))
        return nullptr;
    CloseHandle(started.hThread);
    return std::make_unique<CreatedDebugger>(started.hProcess);
}

void dispatchWindowMessages(int count) noexcept
{
    MSG message;
    for (int i = 0; i < count && PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE); ++i) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

}  // namespace tollan::platform
