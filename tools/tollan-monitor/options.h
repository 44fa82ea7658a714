// The monitor's command line:
//   tollan-monitor run [--pause] [--log FILE] [--] PROGRAM [ARGUMENTS...]
//   tollan-monitor --help
#pragma once

#include <string>
#include <vector>

namespace tollan::monitor {

struct Options {
    enum class Command { run, help, invalid };
    Command command = Command::invalid;
    // Wait for Enter on the terminal before resuming a thread that broke.
    bool pause = false;
    // The file for the monitor's report; empty: standard error.
    std::string logFile;
    // The program and its arguments, null-terminated for execvp.
    std::vector<char *> program;
    // Why the command line was refused (Command::invalid).
    std::string error;
};

// Reads argv; the program's arguments point into argv.
Options parseOptions(int argc, char **argv);

// The text --help prints.
extern const char kUsage[];

}  // namespace tollan::monitor
