// The monitor's command line:
//   tollan-monitor run [--pause] [--log FILE] [--] PROGRAM [ARGUMENTS...]
//   tollan-monitor attach [--pause] [--log FILE] PID
//   tollan-monitor [--pause] [--log FILE] -pPID
//   tollan-monitor --help
// The third form is attach as a program calls its debugger in: with the
// development environment's command line ("-p0x" and the process id in
// hexadecimal). A PID is decimal, or hexadecimal after "0x", in both forms.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tollan::monitor {

struct Options {
    enum class Command { run, attach, help, invalid };
    Command command = Command::invalid;
    // Wait for Enter on the terminal before resuming a thread that broke.
    bool pause = false;
    // The file for the monitor's report; empty: standard error.
    std::string logFile;
    // run: the program and its arguments, null-terminated for execvp.
    std::vector<char *> program;
    // attach: the running program's process id.
    pid_t pid = 0;
    // Why the command line was refused (Command::invalid).
    std::string error;
};

// Reads argv; the program's arguments point into argv.
Options parseOptions(int argc, char **argv);

// The text --help prints.
extern const char kUsage[];

}  // namespace tollan::monitor
