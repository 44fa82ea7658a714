#include "signals.h"

#include <signal.h>

#include <atomic>
#include <iterator>

namespace tollan::monitor {
namespace {

constexpr int kSignals[] = {SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGHUP};
struct sigaction original[std::size(kSignals)];
sigset_t originalMask;
std::atomic<pid_t> receiver{0};

void handOn(int signal) noexcept
{
    // 0 would be the monitor's own process group: never.
    if (const pid_t pid = receiver.load(); pid > 0) kill(pid, signal);
}

}  // namespace

void installMonitorSignals() noexcept
{
    sigprocmask(SIG_SETMASK, nullptr, &originalMask);
    for (size_t i = 0; i < std::size(kSignals); ++i) {
        struct sigaction action {};
        sigemptyset(&action.sa_mask);
        action.sa_flags = SA_RESTART;
        action.sa_handler = kSignals[i] == SIGTERM || kSignals[i] == SIGHUP ? handOn : SIG_IGN;
        sigaction(kSignals[i], &action, &original[i]);
    }
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

}  // namespace tollan::monitor
