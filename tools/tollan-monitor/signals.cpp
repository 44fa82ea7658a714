#include "signals.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <iterator>

namespace tollan::monitor {
namespace {

constexpr int kSignals[] = {SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGHUP};
struct sigaction original[std::size(kSignals)];
sigset_t originalMask;
std::atomic<pid_t> receiver{0};
std::atomic<int> stopRequest{0};
int stopPipe[2] = {-1, -1};

void handOn(int signal) noexcept
{
    // 0 would be the monitor's own process group: never.
    if (const pid_t pid = receiver.load(); pid > 0) kill(pid, signal);
}

void requestStop(int signal) noexcept
{
    const int savedErrno = errno;
    int none = 0;
    stopRequest.compare_exchange_strong(none, signal);
    // Non-blocking: a full pipe has said enough already.
    const char byte = 1;
    const ssize_t written = write(stopPipe[1], &byte, 1);
    (void)written;
    errno = savedErrno;
}

void install(int signal, void (*handler)(int), struct sigaction *previous) noexcept
{
    struct sigaction action {};
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    action.sa_handler = handler;
    sigaction(signal, &action, previous);
}

}  // namespace

void installMonitorSignals() noexcept
{
    sigprocmask(SIG_SETMASK, nullptr, &originalMask);
    for (size_t i = 0; i < std::size(kSignals); ++i)
        install(kSignals[i], kSignals[i] == SIGTERM || kSignals[i] == SIGHUP ? handOn : SIG_IGN,
                &original[i]);
}

void handSignalsTo(pid_t pid) noexcept
{
    receiver.store(pid);
}

void restoreSignalsInChild() noexcept
{
    receiver.store(0);
    for (size_t i = 0; i < std::size(kSignals); ++i) sigaction(kSignals[i], &original[i], nullptr);
    sigprocmask(SIG_SETMASK, &originalMask, nullptr);
}

int installAttachSignals(bool sharesProgramGroup) noexcept
{
    const bool canStop = pipe2(stopPipe, O_CLOEXEC | O_NONBLOCK) == 0;
    sigset_t used;
    sigemptyset(&used);
    for (int signal : kSignals) {
        sigaddset(&used, signal);
        const bool fromTerminal = signal == SIGINT || signal == SIGQUIT;
        struct sigaction found {};
        sigaction(signal, nullptr, &found);
        // Started in the background (or under nohup): the terminal's signals stay ignored.
        if (fromTerminal && found.sa_handler == SIG_IGN) continue;
        if (signal == SIGPIPE || (fromTerminal && sharesProgramGroup))
            install(signal, SIG_IGN, nullptr);
        else
            install(signal, canStop ? requestStop : SIG_DFL, nullptr);
    }
    sigprocmask(SIG_UNBLOCK, &used, nullptr);
    return canStop ? stopPipe[0] : -1;
}

int stopSignal() noexcept
{
    return stopRequest.load();
}

}  // namespace tollan::monitor
