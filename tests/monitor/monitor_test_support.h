// What the monitor's tests share: running a program with its standard
// output and error collected, and the checks of what a run leaves behind.
#pragma once

#include <grp.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/posix/monitor_channel.h"
#include "platform/shared_memory.h"

struct CapturedRun {
    int status = -1;  // the exit status; -1 when it had to be killed
    std::string out;
    std::string err;
};

// Runs words[0] with the arguments words[1...] in a session of its own (no
// terminal to wait on), collecting its standard output and error until every
// process that holds them (the monitor too) has ended. A run that takes
// longer than 10 s is killed with its whole process group. asUnprivileged:
// when the test runs as root, the run is made as user nobody, which lacks
// root's leave to read any process's memory.
inline CapturedRun runCaptured(std::vector<std::string> words, bool asUnprivileged = false)
{
    std::vector<char *> argv;
    for (std::string &word : words) argv.push_back(word.data());
    argv.push_back(nullptr);

    int out[2];
    int err[2];
    EXPECT_EQ(pipe(out), 0);
    EXPECT_EQ(pipe(err), 0);
    const pid_t pid = fork();
    if (pid == 0) {
        setsid();
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        close(out[0]);
        close(err[0]);
        if (asUnprivileged && geteuid() == 0) {
            constexpr uid_t kNobody = 65534;
            // Root's runtime directory is no place for nobody's sockets.
            unsetenv("XDG_RUNTIME_DIR");
            if (setgroups(0, nullptr) != 0 || setresgid(kNobody, kNobody, kNobody) != 0 ||
                setresuid(kNobody, kNobody, kNobody) != 0)
                _exit(126);
        }
        execv(argv[0], argv.data());
        _exit(126);
    }
    close(out[1]);
    close(err[1]);
    CapturedRun run;
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
    EXPECT_FALSE(killed) << "the run hung; it wrote:\n" << run.out << run.err;
    run.status = !killed && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

inline size_t count(const std::string &text, const std::string &part)
{
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++found;
    return found;
}

// The shared block and both sockets made for process `pid` are gone.
inline void expectLinkObjectsGone(int pid, const std::string &report)
{
    ASSERT_GT(pid, 0) << report;
    char hex[16];
    std::snprintf(hex, sizeof hex, "%x", static_cast<unsigned>(pid));
    EXPECT_EQ(tollan::platform::SharedMemory::open(
                  (std::string("Vantrel - ZOR DBG Shared Info") + hex).c_str(), 364),
              nullptr);
    for (const char *pipe : {"\\\\.\\pipe\\Vantrel - ZOR Pipe for Debugging Output",
                             "\\\\.\\pipe\\Vantrel - ZOR Standard IO Pipe "}) {
        const std::string path = tollan::platform::posix::pipeSocketPath((pipe + std::string(hex)).c_str());
        EXPECT_NE(access(path.c_str(), F_OK), 0) << path;
    }
}

#define EXPECT_HAS(text, part) EXPECT_NE((text).find(part), std::string::npos) << (text)
