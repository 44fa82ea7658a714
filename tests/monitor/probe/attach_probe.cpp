// A program with the library's objects linked in that calls tollan-monitor
// in while it runs, as a run-time error report's "Break" does: it makes the
// "Debug Started" event, starts the monitor (argv[1]) with its own process
// id, lets it read its memory, waits for the event and connects. Then it
// writes one line of debug output, breaks once and ends. argv[2] picks the
// monitor's command line: "dash-p" (the development environment's) or
// "attach"; a third argument "undumpable" makes the probe's memory closed
// to a monitor without privileges. What it sees goes to standard output for
// the test to check.
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include <tollan/logger.h>

#include "break_in_function.h"
#include "debugger/library.h"
#include "platform/event.h"

namespace {

constexpr char kDebugStarted[] = "Vantrel - ZOR DBG Event To Signal Debug Started";

pid_t startMonitor(const char *monitor, const std::string &form)
{
    char pid[32];
    if (form == "dash-p")
        std::snprintf(pid, sizeof pid, "-p0x%x", static_cast<unsigned>(getpid()));
    else
        std::snprintf(pid, sizeof pid, "%d", static_cast<int>(getpid()));
    const pid_t child = fork();
    if (child == 0) {
        if (form == "dash-p")
            execl(monitor, monitor, pid, static_cast<char *>(nullptr));
        else
            execl(monitor, monitor, "attach", pid, static_cast<char *>(nullptr));
        _exit(126);
    }
    return child;
}

// Waits for the event while the monitor runs, 10 s at most.
bool monitorStarted(tollan::platform::Event &started, pid_t monitor)
{
    for (int tries = 0; tries < 100; ++tries) {
        if (started.wait(100) == tollan::platform::WaitResult::signalled) return true;
        if (waitpid(monitor, nullptr, WNOHANG) == monitor) return false;
    }
    return false;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc < 3 || argc > 4) {
        std::fprintf(stderr, "usage: attach_probe MONITOR dash-p|attach [undumpable]\n");
        return 2;
    }
    if (argc == 4 && std::string(argv[3]) == "undumpable") prctl(PR_SET_DUMPABLE, 0);
    const std::unique_ptr<tollan::platform::Event> started =
        tollan::platform::Event::create(false, false, kDebugStarted);
    if (started == nullptr) return 3;
    const pid_t monitor = startMonitor(argv[1], argv[2]);
    // Where Yama restricts tracing, the monitor may read this program's
    // memory only with leave; elsewhere the call fails and is not needed.
    prctl(PR_SET_PTRACER, static_cast<unsigned long>(monitor));
    std::printf("monitor %d\n", static_cast<int>(monitor));
    std::fflush(stdout);
    if (!monitorStarted(*started, monitor)) {
        std::printf("the monitor did not start\n");
        return 4;
    }
    tollan::debugger::CdbInitialize();
    SetZORLogReportingLocation(ZOR_LOG_LOCATION_DEBUG_OUTPUT, 0, nullptr);
    SetZORLogOutputFormat("[MSG]");
    WriteZORLogMessage(ZOR_LOG_FATAL, 0, 0, __FILE__, __func__, __LINE__, "attached probe says %s", "hello");
    std::printf("connected %d, break %d\n", __ZOR_Debug_IsConnected(), breakInAFunction());
    return 0;
}
