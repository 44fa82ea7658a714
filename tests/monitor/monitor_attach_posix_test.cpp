// tollan-monitor serving a program that is already running. The probe calls
// the monitor in as a run-time error report's "Break" does; the monitor is
// the probe's child and outlives it, so the test takes it over as a child
// subreaper to collect its exit status.
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "fixtures/probes.h"
#include "monitor_test_support.h"

namespace {

// The number that follows `label` in `text`; 0 when there is none.
int numberAfter(const std::string &text, const std::string &label)
{
    const size_t at = text.find(label);
    return at == std::string::npos ? 0 : std::atoi(text.c_str() + at + label.size());
}

// Orphans of the test's own children become the test's children meanwhile.
class SubreaperHold {
public:
    SubreaperHold() { EXPECT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0); }
    ~SubreaperHold() { prctl(PR_SET_CHILD_SUBREAPER, 0); }
    SubreaperHold(const SubreaperHold &) = delete;
    SubreaperHold &operator=(const SubreaperHold &) = delete;
};

struct AttachRun : CapturedRun {
    int monitorStatus = -1;  // -1: not collected, or ended by a signal
    int program = 0;         // from the monitor's "attached to process N"
};

// Runs the attach probe with the monitor's form and the probe's options,
// and collects the monitor that the probe started and left behind.
AttachRun runAttachProbe(const std::vector<std::string> &arguments, bool asUnprivileged = false)
{
    SubreaperHold hold;
    std::vector<std::string> words = {probePath("attach_probe"), TOLLAN_MONITOR_PATH};
    words.insert(words.end(), arguments.begin(), arguments.end());
    AttachRun run{runCaptured(words, asUnprivileged)};
    const pid_t monitor = numberAfter(run.out, "monitor ");
    int status = 0;
    if (monitor > 0 && waitpid(monitor, &status, 0) == monitor && WIFEXITED(status))
        run.monitorStatus = WEXITSTATUS(status);
    run.program = numberAfter(run.err, "tollan-monitor: attached to process ");
    return run;
}

// A process that has ended and been collected: its id names nobody.
pid_t endedProcess()
{
    const pid_t pid = fork();
    if (pid == 0) _exit(0);
    waitpid(pid, nullptr, 0);
    return pid;
}

TEST(MonitorAttach, AProgramCallsTheMonitorInConnectsBreaksAndEndsWhileTheMonitorGoesOn)
{
    // The development environment's command line, and the attach command.
    for (const char *form : {"dash-p", "attach"}) {
        SCOPED_TRACE(form);
        const AttachRun run = runAttachProbe({form});
        EXPECT_EQ(run.status, 0) << run.out << run.err;
        EXPECT_EQ(run.monitorStatus, 0) << run.err;
        EXPECT_HAS(run.out, "connected 1, break 0\n");
        const int program = run.program;
        const std::string thread = "thread " + std::to_string(program);
        const std::vector<std::string> inOrder = {"attached to process ",
                                                  "module attached: ",
                                                  "debug output: attached probe says hello\n",
                                                  thread + " stopped at probe.c:42.7\n",
                                                  "  #0 probe_function at probe.c:42.7\n",
                                                  thread + " resumed\n",
                                                  "module detached: ",
                                                  "the program ended\n"};
        size_t at = 0;
        for (const std::string &line : inOrder) {
            at = run.err.find("tollan-monitor: " + line, at);
            EXPECT_NE(at, std::string::npos) << line << " in order in\n" << run.err;
        }
        EXPECT_EQ(count(run.err, "cannot be read"), 0u) << run.err;
        EXPECT_EQ(count(run.err, "refuses"), 0u) << run.err;
        expectLinkObjectsGone(program, run.err);
    }
}

TEST(MonitorAttach, AProgramWhoseMemoryTheMonitorMayNotReadStillBreaksAndTheReportSaysWhyOnce)
{
    const AttachRun run = runAttachProbe({"dash-p", "undumpable"}, true);
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_EQ(run.monitorStatus, 0) << run.err;
    EXPECT_HAS(run.out, "connected 1, break 0\n");
    EXPECT_HAS(run.err, "debug output: attached probe says hello\n");
    EXPECT_HAS(run.err, "cannot be read)\n");
    EXPECT_EQ(count(run.err, "the system refuses the monitor reading process"), 1u) << run.err;
    EXPECT_HAS(run.err, " resumed\n");
    EXPECT_HAS(run.err, "tollan-monitor: the program ended\n");
}

TEST(MonitorAttach, ASecondMonitorIsRefusedAndATerminateSignalMakesTheMonitorLeaveTheProgramRunning)
{
    const pid_t program = fork();
    if (program == 0) {
        pause();
        _exit(0);
    }
    char hex[16];
    std::snprintf(hex, sizeof hex, "%x", static_cast<unsigned>(program));
    const std::string socket = tollan::platform::posix::pipeSocketPath(
        (std::string("\\\\.\\pipe\\Vantrel - ZOR Pipe for Debugging Output") + hex).c_str());
    // The monitor's objects are made after its signals are in place.
    const std::string script = "\"$0\" attach " + std::to_string(program) +
                               " & m=$!; while [ ! -S \"$1\" ]; do sleep 0.02; done; \"$0\" -p0x" + hex +
                               "; echo second $?; kill -TERM $m; wait $m; echo status $?";
    const CapturedRun run = runCaptured({"/bin/sh", "-c", script, TOLLAN_MONITOR_PATH, socket});
    // A second monitor (the environment's command line) leaves the first one's objects alone.
    EXPECT_EQ(run.out, "second 125\nstatus 143\n") << run.err;
    EXPECT_HAS(run.err, "tollan-monitor: another monitor listens at '" + socket + "'\n");
    EXPECT_HAS(run.err, "tollan-monitor: left process " + std::to_string(program) + " on signal 15");
    EXPECT_EQ(waitpid(program, nullptr, WNOHANG), 0) << "the program was stopped too";
    expectLinkObjectsGone(program, run.err);
    kill(program, SIGKILL);
    waitpid(program, nullptr, 0);
}

TEST(MonitorAttach, RefusesAProcessThatIsNotThereAndCommandLinesWithoutOneProcessId)
{
    const std::string gone = std::to_string(endedProcess());
    CapturedRun run = runCaptured({TOLLAN_MONITOR_PATH, "attach", gone});
    EXPECT_EQ(run.status, 125);
    EXPECT_EQ(run.err, "tollan-monitor: cannot attach: there is no process " + gone + "\n");

    const struct {
        std::vector<std::string> arguments;
        const char *complaint;
    } refused[] = {
        {{"-p0xzz"}, "'-p0xzz' is no process id"},
        {{"-p"}, "'-p' is no process id"},
        {{"--pause"}, "no process id given"},
        {{"attach"}, "no process id given"},
        {{"attach", "-5"}, "unknown option '-5'"},
        {{"attach", "12", "13"}, "more than one process id given"},
        {{"attach", "0"}, "'0' is no process id"},
        {{"-p0x10", "extra"}, "unexpected 'extra'"},
        {{"attach", "-p0x10"}, "unknown option '-p0x10'"},
    };
    for (const auto &line : refused) {
        std::vector<std::string> words = {TOLLAN_MONITOR_PATH};
        words.insert(words.end(), line.arguments.begin(), line.arguments.end());
        run = runCaptured(words);
        EXPECT_EQ(run.status, 125) << line.complaint;
        EXPECT_HAS(run.err, std::string("tollan-monitor: ") + line.complaint + "\n");
    }
}

}  // namespace
