// tollan-monitor: runs a program, or serves one already running, as the
// development environment's debugger would on Windows, so that the debugger
// link of a program linked with Tollan can be used and tested on POSIX. See
// docs/debugging.md.
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <string>

#include "attached_process.h"
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

// The program's end as the monitor's exit status: its own, or 128 + the
// signal; 0 for an attached program, whose status is its parent's to
// collect. A monitor told to leave first ends with 128 + that signal.
int passOn(Report &report, const std::optional<ProgramEnd> &end, pid_t pid)
{
    if (!end) {
        const int signal = stopSignal();
        report.line("left process %d on signal %d (%s); it goes on", static_cast<int>(pid), signal,
                    strsignal(signal));
        return 128 + signal;
    }
    if (!end->waitStatus) {
        report.line("the program ended");
        return 0;
    }
    const int status = *end->waitStatus;
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

int runProgram(const Options &options, Report &report)
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
        child->ended(true);
        return kMonitorFailed;
    }
    handSignalsTo(child->pid());
    if (child->release(&error))
        report.line("running %s as process %d", options.program[0], static_cast<int>(child->pid()));
    else
        report.line("cannot run %s: %s", options.program[0], error.c_str());
    Session session(*child, objects, report, options.pause, -1);
    const std::optional<ProgramEnd> end = session.run();
    handSignalsTo(0);
    return passOn(report, end, child->pid());
}

// The program waits for the "Debug Started" event once it has started the
// monitor; its objects must be there before the event is set.
int attachToProgram(const Options &options, Report &report)
{
    const int stopFd = installAttachSignals(getpgid(options.pid) == getpgrp());
    std::string error;
    std::optional<AttachedProcess> program = AttachedProcess::open(options.pid, &error);
    if (!program) {
        report.line("cannot attach: %s", error.c_str());
        return kMonitorFailed;
    }
    LinkObjects objects;
    if (!makeLinkObjects(options.pid, &objects, &error) || !signalDebugStarted(&error)) {
        report.line("%s", error.c_str());
        return kMonitorFailed;
    }
    report.line("attached to process %d", static_cast<int>(options.pid));
    Session session(*program, objects, report, options.pause, stopFd);
    return passOn(report, session.run(), options.pid);
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
        result = options.command == Options::Command::attach ? attachToProgram(options, report)
                                                             : runProgram(options, report);
    } catch (const std::exception &failure) {
        report.line("%s", failure.what());
    }
    if (stream != stderr) std::fclose(stream);
    return result;
}
