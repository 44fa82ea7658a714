// tollan-monitor: runs a program as the development environment's debugger
// would on Windows, so that the debugger link of a program linked with
// Tollan can be used and tested on POSIX. See docs/debugging.md.
#include <sys/wait.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <string>

#include "child_process.h"
#include "link_objects.h"
#include "options.h"
#include "report.h"
#include "session.h"
#include "signals.h"

namespace {

using namespace tollan::monitor;

// The monitor's own failures, as env(1) and timeout(1) report theirs.
constexpr int kMonitorFailed = 125;

// The program's wait status as an exit status: its own, or 128 + the signal.
int passOn(Report &report, int status)
{
    if (WIFEXITED(status)) {
        report.line("the program exited with status %d", WEXITSTATUS(status));
        return WEXITSTATUS(status);
    }
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        report.line("the program was ended by signal %d (%s)%s", signal, strsignal(signal),
                    WCOREDUMP(status) ? ", core dumped" : "");
        return 128 + signal;
    }
    return kMonitorFailed;
}

int run(const Options &options, Report &report)
{
    installMonitorSignals();
    std::string error;
    std::optional<ChildProcess> child = ChildProcess::start(options.program.data(), &error);
    if (!child) {
        report.line("%s", error.c_str());
        return kMonitorFailed;
    }
    LinkObjects objects;
    if (!makeLinkObjects(child->pid(), &objects, &error)) {
        report.line("%s", error.c_str());
        child->abandon();
        child->exited(true);
        return kMonitorFailed;
    }
    handSignalsTo(child->pid());
    if (child->release(&error))
        report.line("running %s as process %d", options.program[0], static_cast<int>(child->pid()));
    else
        report.line("cannot run %s: %s", options.program[0], error.c_str());
    Session session(*child, objects, report, options.pause);
    const int status = session.run();
    handSignalsTo(0);
    return passOn(report, status);
}

}  // namespace

int main(int argc, char **argv)
{
    const Options options = parseOptions(argc, argv);
    if (options.command == Options::Command::help) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (options.command == Options::Command::invalid) {
        std::fprintf(stderr, "tollan-monitor: %s\n%s", options.error.c_str(), kUsage);
        return kMonitorFailed;
    }
    FILE *stream = stderr;
    if (!options.logFile.empty()) {
        stream = std::fopen(options.logFile.c_str(), "we");
        if (stream == nullptr) {
            std::fprintf(stderr, "tollan-monitor: cannot write '%s': %s\n", options.logFile.c_str(),
                         std::strerror(errno));
            return kMonitorFailed;
        }
    }
    Report report(stream);
    int result = kMonitorFailed;
    try {
        result = run(options, report);
    } catch (const std::exception &failure) {
        report.line("%s", failure.what());
    }
    if (stream != stderr) std::fclose(stream);
    return result;
}
