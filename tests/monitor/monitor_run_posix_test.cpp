// tollan-monitor running programs: the probes (linked with the library) and
// plain programs. Each test starts the monitor as a user would and checks
// what it reports on standard error, what reaches standard output and the
// status it ends with.
#include <signal.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "fixtures/probes.h"
#include "monitor_test_support.h"

namespace {

struct MonitorRun : CapturedRun {
    int programPid = 0;  // from the monitor's "running ... as process N"
};

// Runs tollan-monitor with `arguments`.
MonitorRun runMonitor(const std::vector<std::string> &arguments)
{
    std::vector<std::string> words = {TOLLAN_MONITOR_PATH};
    words.insert(words.end(), arguments.begin(), arguments.end());
    MonitorRun run{runCaptured(words)};
    const size_t running = run.err.find(" as process ");
    if (running != std::string::npos) run.programPid = std::atoi(run.err.c_str() + running + 12);
    return run;
}

void expectNothingLeftBehind(const MonitorRun &run)
{
    expectLinkObjectsGone(run.programPid, run.err);
}

TEST(MonitorRun, ShowsTheLibraryArrivingAndLeavingItsDebugOutputAndItsExitStatus)
{
    const MonitorRun run = runMonitor({"run", "--", probePath("monitor_probe"), "exit"});
    EXPECT_EQ(run.status, 3);
    EXPECT_HAS(run.err, "module attached: ");
    EXPECT_HAS(run.err, "libtollan.so");
    EXPECT_HAS(run.err, "2 debug-table entries, version 17.0.0.295)");
    EXPECT_HAS(run.err, "tollan-monitor: debug output: probe ends with 3\n");
    EXPECT_HAS(run.err, "module detached: handle ");
    EXPECT_HAS(run.err, "the program exited with status 3");
    expectNothingLeftBehind(run);
}

TEST(MonitorRun, ABreakShowsWhereTheThreadStoppedAndTheThreadGoesOn)
{
    const MonitorRun run = runMonitor({"run", probePath("monitor_probe"), "break"});
    EXPECT_EQ(run.status, 0);
    EXPECT_HAS(run.out, "after break: result 0 connected 1 debugged 1\n");
    EXPECT_HAS(run.err, " stopped at probe.c:42.7\n");
    EXPECT_HAS(run.err, "  #0 probe_function at probe.c:42.7\n");
    EXPECT_HAS(run.err, " resumed\n");
    EXPECT_EQ(count(run.err, "break reason"), 0u) << run.err;
    expectNothingLeftBehind(run);

    // Asked to wait for Enter where there is no terminal, it does not wait.
    const MonitorRun paused = runMonitor({"run", "--pause", "--", probePath("monitor_probe"), "break"});
    EXPECT_EQ(paused.status, 0);
    EXPECT_HAS(paused.err, "--pause: no terminal");
    EXPECT_HAS(paused.out, "after break: result 0 connected 1 debugged 1\n");
}

TEST(MonitorRun, TheDisconnectHandshakeReleasesTheProgramOnce)
{
    const MonitorRun run = runMonitor({"run", "--", probePath("monitor_probe"), "disconnect"});
    EXPECT_EQ(run.status, 0);
    EXPECT_HAS(run.out, "disconnect: result 0 connected 0\n");
    // Connected again, the next break is an ordinary one.
    EXPECT_HAS(run.out, "reconnect: result 0 break 0\n");
    EXPECT_EQ(count(run.err, "(break reason 35: the program disconnects)"), 1u) << run.err;
    EXPECT_EQ(count(run.err, "the program disconnected"), 1u) << run.err;
    EXPECT_HAS(run.err, " stopped at probe.c:42.7\n");
    expectNothingLeftBehind(run);
}

#ifdef TOLLAN_MONITOR_RESOURCE_PROBE
TEST(MonitorRun, ResourcesStillHeldAtTheEndAreListedWithTheirStacks)
{
    const MonitorRun run = runMonitor({"run", "--", probePath("resource_probe")});
    EXPECT_EQ(run.status, 0);
    EXPECT_HAS(run.out, "resource probe: tracking 1\n");
    EXPECT_HAS(run.err, "final tally of resources");
    EXPECT_HAS(run.err,
               "tollan-monitor: 1 resource still held:\n"
               "tollan-monitor:   #2 Files \"file 2\" acquired at probe.c:12.5 by thread ");
    EXPECT_HAS(run.err, "tollan-monitor:       probe.c 10.1-20.2 open_files\n");
    EXPECT_EQ(count(run.err, "file 1"), 0u) << run.err;
    EXPECT_EQ(count(run.err, "incomplete"), 0u) << run.err;
    expectNothingLeftBehind(run);
}
#endif

TEST(MonitorRun, ShowsWhatTheProgramWritesToItsStandardIOPipeLiveInOrderAndByStream)
{
    const MonitorRun run = runMonitor({"run", "--", probePath("standard_io_probe")});
    EXPECT_EQ(run.status, 0) << run.err;
    // The library switched the pipe on because the monitor made the shared
    // block. The program's standard output got exactly its writes; the pipe
    // got the same writes, shown in the report and not copied to the
    // monitor's standard output, which the program shares.
    const std::string longLine = std::string(5000, 'L') + "\n";
    EXPECT_EQ(run.out, "standard I/O pipe on: 1\nout1\nout2\ntab\tand\x01" + longLine);
    // In the order written, and among the event texts where the program made them.
    size_t at = 0;
    for (const char *line : {"module attached: ", "stdout: standard I/O pipe on: 1\n", "stdout: out1\n",
                             "stderr: err1\n", "stdout: out2\n", "stderr: two\n", "stderr: lines\n",
                             "stdout: tab\tand\\x01", "module detached: "}) {
        at = run.err.find(std::string("tollan-monitor: ") + line, at);
        EXPECT_NE(at, std::string::npos) << line << " in order in\n" << run.err;
    }
    EXPECT_HAS(run.err, "tollan-monitor: stdout: " + std::string(5000, 'L') + "\n");  // not cut short
    expectNothingLeftBehind(run);
}

TEST(MonitorRun, AProgramWithoutTheLibraryJustRunsAndItsStatusPassesThrough)
{
    MonitorRun run = runMonitor({"run", "--", "/bin/sh", "-c", "echo plain; exit 5"});
    EXPECT_EQ(run.status, 5);
    EXPECT_EQ(run.out, "plain\n");
    EXPECT_EQ(count(run.err, "module attached"), 0u) << run.err;
    expectNothingLeftBehind(run);

    run = runMonitor({"run", "--", "/bin/sh", "-c", "kill -TERM $$"});
    EXPECT_EQ(run.status, 128 + SIGTERM);
    EXPECT_HAS(run.err, "the program was ended by signal 15");
    expectNothingLeftBehind(run);

    run = runMonitor({"run", "--", "/nonexistent/program"});
    EXPECT_EQ(run.status, 127);
    EXPECT_HAS(run.err, "cannot run /nonexistent/program");

    EXPECT_EQ(runMonitor({"run", "--pause"}).status, 125);
    EXPECT_EQ(runMonitor({"walk", "x"}).status, 125);
}

}  // namespace
