// The debugger's facilities on POSIX: a ptrace tracer, or tollan-monitor
// through its per-process channel (see monitor_channel.h).
#include "platform/debugger.h"

#include <pthread.h>
#include <setjmp.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "platform/posix/monitor_channel.h"
#include "platform/posix/system_calls.h"
#include "platform/thread.h"

namespace tollan::platform {
using posix::sys;

namespace {

// The connection for debug output and event texts, and where it leads (for
// the breaks, which connect anew each time).
std::mutex channelLock;
std::atomic<int> channel{-1};
std::string channelPath;

bool tracerAttached() noexcept
{
    FILE *status = std::fopen("/proc/self/status", "re");
    if (status == nullptr) return false;
    char line[256];
    long tracer = 0;
    while (std::fgets(line, sizeof line, status) != nullptr)
        if (std::sscanf(line, "TracerPid: %ld", &tracer) == 1) break;
    std::fclose(status);
    return tracer != 0;
}

// Drops the channel after the monitor went away.
void dropChannel(int fd) noexcept
{
    int expected = fd;
    if (channel.compare_exchange_strong(expected, -1)) sys().close(fd);
}

}  // namespace

bool debuggerPresent() noexcept
{
    return channel.load() >= 0 || tracerAttached();
}

void debugEventText(const char *text) noexcept
{
    if (text == nullptr) return;
    std::lock_guard hold(channelLock);
    const int fd = channel.load();
    if (fd < 0) return;
    char answer = 0;
    if (!posix::sendRecord(fd, posix::kRecordText, text, std::strlen(text)) ||
        !posix::readExactly(fd, &answer, 1))
        dropChannel(fd);
}

void debugBreak(const void *threadRecord) noexcept
{
    if (tracerAttached()) {
        raise(SIGTRAP);
        return;
    }
    std::string path;
    {
        std::lock_guard hold(channelLock);
        if (channel.load() < 0) return;
        path = channelPath;
    }
    const int fd = posix::connectTo(path);
    if (fd < 0) return;
    const posix::BreakRecord record{currentThreadId(), reinterpret_cast<uintptr_t>(threadRecord)};
    char answer = 0;
    // Blocks until the monitor resumes the thread (or goes away).
    if (posix::sendRecord(fd, posix::kRecordBreak, &record, sizeof record))
        posix::readExactly(fd, &answer, 1);
    sys().close(fd);
}

int32_t openDebugOutputPipe(const char *name) noexcept
{
    std::lock_guard hold(channelLock);
    if (channel.load() >= 0) return -71;
    try {
        const std::string path = posix::pipeSocketPath(name);
        const int fd = posix::connectTo(path);
        if (fd < 0) return -70;
        channelPath = path;
        channel.store(fd);
        return 0;
    } catch (...) {
        return -70;
    }
}

void closeDebugOutputPipe() noexcept
{
    std::lock_guard hold(channelLock);
    const int fd = channel.exchange(-1);
    if (fd >= 0) sys().close(fd);
}

bool debugOutputPipeOpen() noexcept
{
    return channel.load() >= 0;
}

void debugOutput(const char *text) noexcept
{
    if (text == nullptr) return;
    std::lock_guard hold(channelLock);
    const int fd = channel.load();
    if (fd >= 0 && !posix::sendRecord(fd, posix::kRecordOutput, text, std::strlen(text))) dropChannel(fd);
}

uint32_t lastSystemError() noexcept
{
    return static_cast<uint32_t>(errno);
}

void setLastSystemError(uint32_t error) noexcept
{
    errno = static_cast<int>(error);
}

namespace {

constexpr int kGuardedSignals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE};

thread_local sigjmp_buf *recovery = nullptr;
std::mutex guardLock;
int guardedCalls = 0;
struct sigaction previous[sizeof kGuardedSignals / sizeof *kGuardedSignals];

void onFault(int signal) noexcept
{
    if (sigjmp_buf *target = recovery) siglongjmp(*target, 1);
    // A fault of a thread outside a guarded call: as if we were not here.
    for (size_t i = 0; i < std::size(kGuardedSignals); ++i)
        if (kGuardedSignals[i] == signal) sigaction(signal, &previous[i], nullptr);
}

void installHandlers() noexcept
{
    std::lock_guard hold(guardLock);
    if (guardedCalls++ > 0) return;
    struct sigaction action {};
    action.sa_handler = onFault;
    sigemptyset(&action.sa_mask);
    for (size_t i = 0; i < std::size(kGuardedSignals); ++i)
        sigaction(kGuardedSignals[i], &action, &previous[i]);
}

void removeHandlers() noexcept
{
    std::lock_guard hold(guardLock);
    if (--guardedCalls > 0) return;
    for (size_t i = 0; i < std::size(kGuardedSignals); ++i)
        sigaction(kGuardedSignals[i], &previous[i], nullptr);
}

}  // namespace

bool callGuarded(void (*function)(void *), void *argument) noexcept
{
    if (function == nullptr) return false;
    installHandlers();
    sigjmp_buf target;
    sigjmp_buf *outer = recovery;
    bool completed = false;
    if (sigsetjmp(target, 1) == 0) {
        recovery = &target;
        function(argument);
        completed = true;
    }
    recovery = outer;
    removeHandlers();
    return completed;
}

}  // namespace tollan::platform
