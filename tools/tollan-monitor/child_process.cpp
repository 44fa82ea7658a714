#include "child_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "signals.h"

namespace tollan::monitor {
namespace {

// The child's side: only async-signal-safe calls until exec.
[[noreturn]] void runChild(char *const argv[], int go, int execReport) noexcept
{
    restoreSignalsInChild();
    char byte = 0;
    ssize_t got;
    do {
        got = read(go, &byte, 1);
    } while (got < 0 && errno == EINTR);
    if (got != 1) _exit(125);  // the monitor gave up before it let us go
    close(go);
    execvp(argv[0], argv);
    const int failure = errno;
    ssize_t put;
    do {
        put = write(execReport, &failure, sizeof failure);
    } while (put < 0 && errno == EINTR);
    _exit(failure == ENOENT ? 127 : 126);
}

}  // namespace

std::optional<ChildProcess> ChildProcess::start(char *const argv[], std::string *error)
{
    int go[2];
    int execReport[2];
    if (pipe2(go, O_CLOEXEC) != 0) {
        *error = std::string("no pipe: ") + std::strerror(errno);
        return std::nullopt;
    }
    if (pipe2(execReport, O_CLOEXEC) != 0) {
        *error = std::string("no pipe: ") + std::strerror(errno);
        close(go[0]);
        close(go[1]);
        return std::nullopt;
    }
    const pid_t pid = fork();
    if (pid == 0) {
        close(go[1]);
        close(execReport[0]);
        runChild(argv, go[0], execReport[1]);
    }
    close(go[0]);
    close(execReport[1]);
    if (pid < 0) {
        *error = std::string("cannot fork: ") + std::strerror(errno);
        close(go[1]);
        close(execReport[0]);
        return std::nullopt;
    }
    return ChildProcess(pid, go[1], execReport[0]);
}

ChildProcess::ChildProcess(pid_t pid, int go, int execReport) noexcept
    : pid_(pid), go_(go), execReport_(execReport), exitFd_(openExitFd(pid))
{
}

ChildProcess::ChildProcess(ChildProcess &&other) noexcept
    : pid_(other.pid_),
      go_(other.go_),
      execReport_(other.execReport_),
      exitFd_(other.exitFd_),
      collected_(other.collected_)
{
    other.pid_ = -1;
    other.go_ = other.execReport_ = other.exitFd_ = -1;
}

ChildProcess::~ChildProcess()
{
    for (int fd : {go_, execReport_, exitFd_})
        if (fd >= 0) close(fd);
}

bool ChildProcess::release(std::string *error) noexcept
{
    const char byte = 'g';
    ssize_t put;
    do {
        put = write(go_, &byte, 1);
    } while (put < 0 && errno == EINTR);
    close(go_);
    go_ = -1;
    // End of file once exec has closed the child's end; an errno otherwise.
    int failure = 0;
    ssize_t got;
    do {
        got = read(execReport_, &failure, sizeof failure);
    } while (got < 0 && errno == EINTR);
    close(execReport_);
    execReport_ = -1;
    if (got == static_cast<ssize_t>(sizeof failure)) {
        *error = std::strerror(failure);
        return false;
    }
    return true;
}

void ChildProcess::abandon() noexcept
{
    if (go_ >= 0) close(go_);
    go_ = -1;
}

std::optional<ProgramEnd> ChildProcess::ended(bool block) noexcept
{
    if (collected_ || pid_ <= 0) return std::nullopt;
    int status = 0;
    pid_t got;
    do {
        got = waitpid(pid_, &status, block ? 0 : WNOHANG);
    } while (got < 0 && errno == EINTR);
    if (got != pid_) return std::nullopt;
    collected_ = true;
    return ProgramEnd{status};
}

}  // namespace tollan::monitor
