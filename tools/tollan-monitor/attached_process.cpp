#include "attached_process.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tollan::monitor {
namespace {

// How often a blocking wait looks again where there is no pidfd.
constexpr useconds_t kGoneCheckUs = 100'000;

// An ended process that its parent has not collected yet still answers
// kill(pid, 0); its state in /proc tells.
bool processGone(pid_t pid) noexcept
{
    if (kill(pid, 0) != 0 && errno == ESRCH) return true;
    char path[32];
    std::snprintf(path, sizeof path, "/proc/%d/stat", static_cast<int>(pid));
    FILE *stat = std::fopen(path, "re");
    if (stat == nullptr) return errno == ENOENT;
    char line[512] = "";
    const bool read = std::fgets(line, sizeof line, stat) != nullptr;
    std::fclose(stat);
    // "pid (name) S ...": the name may hold anything, the state follows its last ')'.
    const char *close = read ? std::strrchr(line, ')') : nullptr;
    return close != nullptr && (close[2] == 'Z' || close[2] == 'X');
}

}  // namespace

std::optional<AttachedProcess> AttachedProcess::open(pid_t pid, std::string *error)
{
    const std::string name = "process " + std::to_string(pid);
    if (kill(pid, 0) != 0) {
        *error = errno == EPERM ? name + " belongs to another user" : "there is no " + name;
        return std::nullopt;
    }
    AttachedProcess process(pid, openExitFd(pid));
    if (process.gone()) {
        *error = name + " has ended";
        return std::nullopt;
    }
    return process;
}

AttachedProcess::AttachedProcess(AttachedProcess &&other) noexcept
    : pid_(other.pid_), exitFd_(other.exitFd_), endTaken_(other.endTaken_)
{
    other.pid_ = -1;
    other.exitFd_ = -1;
}

AttachedProcess::~AttachedProcess()
{
    if (exitFd_ >= 0) close(exitFd_);
}

bool AttachedProcess::gone() const noexcept
{
    if (exitFd_ < 0) return processGone(pid_);
    pollfd polled{exitFd_, POLLIN, 0};
    return poll(&polled, 1, 0) > 0;
}

std::optional<ProgramEnd> AttachedProcess::ended(bool block) noexcept
{
    if (endTaken_ || pid_ <= 0) return std::nullopt;
    while (!gone()) {
        if (!block) return std::nullopt;
        if (exitFd_ >= 0) {
            pollfd polled{exitFd_, POLLIN, 0};
            poll(&polled, 1, -1);  // EINTR: look again
        } else {
            usleep(kGoneCheckUs);
        }
    }
    endTaken_ = true;
    return ProgramEnd{};
}

}  // namespace tollan::monitor
