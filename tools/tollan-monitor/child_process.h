// The program the monitor runs. It is forked at once but held before exec,
// so that the monitor knows its process id and can make the debugger's
// objects named after it before the program (and the library in it) starts
// looking for them.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "served_program.h"

namespace tollan::monitor {

class ChildProcess final : public ServedProgram {
public:
    // Forks; the child takes back the signal dispositions the monitor found
    // (restoreSignalsInChild), waits until release() and then runs argv[0]
    // (looked up in PATH) with argv. Nothing, with *error set, when fork fails.
    static std::optional<ChildProcess> start(char *const argv[], std::string *error);
    ChildProcess(ChildProcess &&other) noexcept;
    ChildProcess &operator=(ChildProcess &&) = delete;
    ~ChildProcess() override;

    pid_t pid() const noexcept override { return pid_; }

    // Lets the child run the program. False with *error when exec failed
    // (the child then ends with status 127 when the program was not found,
    // else 126, as a shell's would).
    bool release(std::string *error) noexcept;
    // Ends a child that was never released (it exits with status 125).
    void abandon() noexcept;

    int exitFd() const noexcept override { return exitFd_; }
    // The end carries the wait status: the child is collected here.
    std::optional<ProgramEnd> ended(bool block) noexcept override;

private:
    ChildProcess(pid_t pid, int go, int execReport) noexcept;
    pid_t pid_;
    int go_;          // write end: one byte lets the child exec
    int execReport_;  // read end: the child's errno when exec failed, else end of file
    int exitFd_;
    bool collected_ = false;
};

}  // namespace tollan::monitor
