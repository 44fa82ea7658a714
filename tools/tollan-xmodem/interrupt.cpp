#include "interrupt.h"

#include <csignal>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace tollan::xmodem_tool {
namespace {

volatile std::sig_atomic_t requested = 0;
volatile std::sig_atomic_t announced = 0;

const char kNote[] = "\ntollan-xmodem: stopping at the next packet; Ctrl-C again quits at once\n";

void onInterrupt(int) noexcept
{
    requested = 1;
    if (announced != 0) {
#ifdef _WIN32
        (void)!_write(2, kNote, sizeof kNote - 1);
#else
        (void)!write(STDERR_FILENO, kNote, sizeof kNote - 1);
#endif
    }
}

}  // namespace

void catchInterrupt(bool announce) noexcept
{
    announced = announce ? 1 : 0;
#ifdef _WIN32
    // The run-time puts the default action back before it calls the handler.
    std::signal(SIGINT, onInterrupt);
#else
    struct sigaction action {};
    // A program started with interrupts ignored (in the background) leaves them so.
    if (sigaction(SIGINT, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) return;
    action = {};
    action.sa_handler = onInterrupt;
    action.sa_flags = SA_RESETHAND;  // the second interrupt takes the default action
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
#endif
}

bool interruptRequested() noexcept
{
    return requested != 0;
}

}  // namespace tollan::xmodem_tool
