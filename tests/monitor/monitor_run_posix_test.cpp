// tollan-monitor running programs: the probes (linked with the library) and
// plain programs. Each test starts the monitor as a user would and checks
// what it reports on standard error, what reaches standard output and the
// status it ends with.
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "fixtures/probes.h"
#include "platform/posix/monitor_channel.h"
#include "platform/shared_memory.h"

namespace {

struct MonitorRun {
    int status = -1;  // the monitor's exit status; -1 when it had to be killed
    std::string out;
    std::string err;
    int programPid = 0;  // from the monitor's "running ... as process N"
};

// Runs tollan-monitor with `arguments`, collecting its standard output and
// error; a run that takes longer than 10 s is killed with its program.
MonitorRun runMonitor(const std::vector<std::string> &arguments)
{
    std::vector<std::string> words = {TOLLAN_MONITOR_PATH};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char *> argv;
    for (std::string &word : words) argv.push_back(word.data());
    argv.push_back(nullptr);

    int out[2];
    int err[2];
    EXPECT_EQ(pipe(out), 0);
    EXPECT_EQ(pipe(err), 0);
    const pid_t pid = fork();
    if (pid == 0) {
        setsid();  // no terminal to wait on, and a hung run goes with its program
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        close(out[0]);
        close(err[0]);
        execv(argv[0], argv.data());
        _exit(126);
    }
    close(out[1]);
    close(err[1]);
    MonitorRun run;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    pollfd polled[2] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}};
    std::string *texts[2] = {&run.out, &run.err};
    bool killed = false;
    while (polled[0].fd >= 0 || polled[1].fd >= 0) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            kill(-pid, SIGKILL);
            killed = true;
            break;
        }
        if (poll(polled, 2, static_cast<int>(left.count())) <= 0) continue;
        for (int i = 0; i < 2; ++i) {
            if (polled[i].revents == 0) continue;
            char bytes[4096];
            const ssize_t got = read(polled[i].fd, bytes, sizeof bytes);
            if (got > 0) {
                texts[i]->append(bytes, static_cast<size_t>(got));
            } else {
                close(polled[i].fd);
                polled[i].fd = -1;
            }
        }
    }
    for (const pollfd &p : polled)
        if (p.fd >= 0) close(p.fd);
    int status = 0;
    waitpid(pid, &status, 0);
    EXPECT_FALSE(killed) << "the monitor hung; it wrote:\n" << run.err;
    run.status = !killed && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    const size_t running = run.err.find(" as process ");
    if (running != std::string::npos) run.programPid = std::atoi(run.err.c_str() + running + 12);
    return run;
}

size_t count(const std::string &text, const std::string &part)
{
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++found;
    return found;
}

std::string hexPid(int pid)
{
    char text[16];
    std::snprintf(text, sizeof text, "%x", static_cast<unsigned>(pid));
    return text;
}

// The shared block and both sockets of the run are gone.
void expectNothingLeftBehind(const MonitorRun &run)
{
    ASSERT_GT(run.programPid, 0) << run.err;
    const std::string pid = hexPid(run.programPid);
    EXPECT_EQ(tollan::platform::SharedMemory::open(("Vantrel - ZOR DBG Shared Info" + pid).c_str(), 364),
              nullptr);
    for (const char *pipe : {"\\\\.\\pipe\\Vantrel - ZOR Pipe for Debugging Output",
                             "\\\\.\\pipe\\Vantrel - ZOR Standard IO Pipe "}) {
        const std::string path = tollan::platform::posix::pipeSocketPath((pipe + pid).c_str());
        EXPECT_NE(access(path.c_str(), F_OK), 0) << path;
    }
}

#define EXPECT_HAS(text, part) EXPECT_NE((text).find(part), std::string::npos) << (text)

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
    for (const char *line :
         {"module attached: ", "stdout: standard I/O pipe on: 1\n", "stdout: out1\n", "stderr: err1\n",
          "stdout: out2\n", "stderr: two\n", "stderr: lines\n", "stdout: tab\tand\\x01", "module detached: "}) {
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
