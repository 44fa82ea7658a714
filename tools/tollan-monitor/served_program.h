// The program a Session serves: one the monitor started (ChildProcess) or
// one that was already running and called the monitor in (AttachedProcess).
// The session needs to know when it has ended and, where the monitor may
// collect it, how.
#pragma once

#include <sys/types.h>

#include <optional>

namespace tollan::monitor {

struct ProgramEnd {
    // The wait status; nothing when the program is not the monitor's child,
    // whose status goes to its own parent.
    std::optional<int> waitStatus;
};

class ServedProgram {
public:
    virtual ~ServedProgram() = default;

    virtual pid_t pid() const noexcept = 0;
    // A descriptor that polls readable once the program has ended (a
    // pidfd); -1 where the system has none: then poll with a timeout and
    // ask ended(false).
    virtual int exitFd() const noexcept = 0;
    // How the program ended; nothing while it runs (block false) or after
    // its end was taken already. block true waits for the end.
    virtual std::optional<ProgramEnd> ended(bool block) noexcept = 0;
};

// A pidfd for process `pid`, which polls readable once the process has
// ended (whether or not it is the caller's child); -1 where the system has
// none or the process is gone.
int openExitFd(pid_t pid) noexcept;

}  // namespace tollan::monitor
