// A program that was running before the monitor came: it started the
// monitor itself (a run-time error report's "Break") or the developer named
// it. The monitor is not its parent, so it learns that the program ended
// but never how: the status goes to the program's own parent.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "served_program.h"

namespace tollan::monitor {

class AttachedProcess final : public ServedProgram {
public:
    // Watches process `pid`. Nothing, with *error set, when there is no such
    // process (or it has ended) or it belongs to another user, whose
    // program would never find this user's link objects.
    static std::optional<AttachedProcess> open(pid_t pid, std::string *error);
    AttachedProcess(AttachedProcess &&other) noexcept;
    AttachedProcess &operator=(AttachedProcess &&) = delete;
    ~AttachedProcess() override;

    pid_t pid() const noexcept override { return pid_; }
    // A pidfd; without one, the end is seen by polling the process id,
    // which a new process could take over between two looks.
    int exitFd() const noexcept override { return exitFd_; }
    // The end never carries a wait status.
    std::optional<ProgramEnd> ended(bool block) noexcept override;

private:
    AttachedProcess(pid_t pid, int exitFd) noexcept : pid_(pid), exitFd_(exitFd) {}
    bool gone() const noexcept;
    pid_t pid_;
    int exitFd_;
    bool endTaken_ = false;
};

}  // namespace tollan::monitor
