#include "options.h"

#include <cstring>

namespace tollan::monitor {

const char kUsage[] =
    "usage: tollan-monitor run [--pause] [--log FILE] [--] PROGRAM [ARGUMENTS...]\n"
    "\n"
    "Runs PROGRAM as the development environment's debugger would: a program\n"
    "linked with Tollan connects to the monitor, which reports its debug event\n"
    "texts, its debug output, its breaks and the resources it still holds at\n"
    "the end. The report goes to standard error; standard output belongs to the\n"
    "program. The exit status is the program's (128 + N when signal N ended it).\n"
    "\n"
    "  --pause     wait for Enter on the terminal before resuming a thread that broke\n"
    "  --log FILE  write the report to FILE instead of standard error\n"
    "  --help      this text\n";

Options parseOptions(int argc, char **argv)
{
    Options options;
    if (argc < 2) {
        options.error = "no command given";
        return options;
    }
    const char *command = argv[1];
    if (std::strcmp(command, "--help") == 0 || std::strcmp(command, "-h") == 0 ||
        std::strcmp(command, "help") == 0) {
        options.command = Options::Command::help;
        return options;
    }
    if (std::strcmp(command, "run") != 0) {
        options.error = std::string("unknown command '") + command + "'";
        return options;
    }
    int next = 2;
    for (; next < argc; ++next) {
        const char *argument = argv[next];
        if (std::strcmp(argument, "--") == 0) {
            ++next;
            break;
        }
        if (argument[0] != '-') break;  // the program
        if (std::strcmp(argument, "--pause") == 0) {
            options.pause = true;
        } else if (std::strcmp(argument, "--log") == 0) {
            if (next + 1 >= argc) {
                options.error = "--log needs a file name";
                return options;
            }
            options.logFile = argv[++next];
        } else if (std::strncmp(argument, "--log=", 6) == 0) {
            options.logFile = argument + 6;
        } else if (std::strcmp(argument, "--help") == 0 || std::strcmp(argument, "-h") == 0) {
            options.command = Options::Command::help;
            return options;
        } else {
            options.error = std::string("unknown option '") + argument + "'";
            return options;
        }
    }
    if (next >= argc) {
        options.error = "no program given";
        return options;
    }
    options.program.assign(argv + next, argv + argc);
    options.program.push_back(nullptr);
    options.command = Options::Command::run;
    return options;
}

}  // namespace tollan::monitor
