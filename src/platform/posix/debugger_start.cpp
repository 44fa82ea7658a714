// Starting the development environment's program as this process's
// debugger. It is spawned, not forked by hand: the process may have many
// threads, and posix_spawn does only what is safe between fork and exec.
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "platform/debugger.h"
#include "platform/thread.h"

namespace tollan::platform {
namespace {

class SpawnedDebugger final : public StartedDebugger {
public:
    explicit SpawnedDebugger(pid_t pid) noexcept : pid_(pid) {}
    // The program goes on when we no longer ask about it; it is collected
    // here so that it leaves no zombie once it ends.
    ~SpawnedDebugger() override
    {
        if (!ended_) waitpid(pid_, nullptr, WNOHANG);
    }
    SpawnedDebugger(const SpawnedDebugger &) = delete;
    SpawnedDebugger &operator=(const SpawnedDebugger &) = delete;

    bool running() noexcept override
    {
        if (!ended_) ended_ = waitpid(pid_, nullptr, WNOHANG) == pid_;
        return !ended_;
    }

private:
    pid_t pid_;
    bool ended_ = false;
};

}  // namespace

std::unique_ptr<StartedDebugger> startDebugger(const char *path) noexcept
{
    if (path == nullptr || path[0] == '\0') return nullptr;
    char processOption[32];
    std::snprintf(processOption, sizeof processOption, "-p0x%x", currentProcessId());
    char *const arguments[] = {const_cast<char *>(path), processOption, nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, path, nullptr, nullptr, arguments, environ) != 0) return nullptr;
    // Under Yama only a process's ancestors may read its memory unless it
    // names a tracer; the debugger we started is its child. Without Yama the
    // call fails and nothing is needed.
    prctl(PR_SET_PTRACER, static_cast<unsigned long>(pid), 0, 0, 0);
    return std::make_unique<SpawnedDebugger>(pid);
}

void dispatchWindowMessages(int /*count*/) noexcept {}

}  // namespace tollan::platform
