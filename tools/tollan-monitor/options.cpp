#include "options.h"

#include <charconv>
#include <climits>
#include <cstring>

namespace tollan::monitor {

const char kUsage[] =
    "usage: tollan-monitor run [--pause] [--log FILE] [--] PROGRAM [ARGUMENTS...]\n"
    "       tollan-monitor attach [--pause] [--log FILE] PID\n"
    "       tollan-monitor [--pause] [--log FILE] -p0xHEXPID\n"
    "\n"
    "Runs PROGRAM as the development environment's debugger would: a program\n"
    "linked with Tollan connects to the monitor, which reports its debug event\n"
    "texts, its debug output, its breaks and the resources it still holds at\n"
    "the end. The report goes to standard error; standard output belongs to the\n"
    "program. The exit status is the program's (128 + N when signal N ended it).\n"
    "\n"
    "attach (or -p) serves a program that is already running and waits for a\n"
    "debugger to start (a run-time error report's \"Break\"), until it ends;\n"
    "the exit status is then 0. PID is decimal, or hexadecimal after 0x.\n"
    "\n"
    "  --pause     wait for Enter on the terminal before resuming a thread that broke\n"
    "  --log FILE  write the report to FILE instead of standard error\n"
    "  --help      this text\n";

namespace {

bool isHelp(const char *argument)
{
    return std::strcmp(argument, "--help") == 0 || std::strcmp(argument, "-h") == 0;
}

// A process id: decimal, or hexadecimal after "0x"; 0 when the text is none.
pid_t parsePid(const char *text)
{
    int base = 10;
    if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        base = 16;
        text += 2;
    }
    const char *end = text + std::strlen(text);
    long value = 0;
    const auto [stop, failure] = std::from_chars(text, end, value, base);
    if (failure != std::errc{} || stop != end || value <= 0 || value > INT_MAX) return 0;
    return static_cast<pid_t>(value);
}

// Reads the option at argv[*next] (and the value after it) into *options.
// False when it is not one: the caller decides what else it may be.
// options->error or Command::help set: stop reading.
bool readOption(int argc, char **argv, int *next, Options *options)
{
    const char *argument = argv[*next];
    if (std::strcmp(argument, "--pause") == 0) {
        options->pause = true;
    } else if (std::strcmp(argument, "--log") == 0) {
        if (*next + 1 >= argc)
            options->error = "--log needs a file name";
        else
            options->logFile = argv[++*next];
    } else if (std::strncmp(argument, "--log=", 6) == 0) {
        options->logFile = argument + 6;
    } else if (isHelp(argument)) {
        options->command = Options::Command::help;
    } else {
        return false;
    }
    return true;
}

bool stopped(const Options &options)
{
    return !options.error.empty() || options.command == Options::Command::help;
}

// Sets options->pid from `text`, or the error that names it.
void takePid(const char *text, const char *shown, Options *options)
{
    options->pid = parsePid(text);
    if (options->pid == 0) options->error = std::string("'") + shown + "' is no process id";
}

void parseRun(int argc, char **argv, Options *options)
{
    int next = 2;
    for (; next < argc && !stopped(*options); ++next) {
        const char *argument = argv[next];
        if (std::strcmp(argument, "--") == 0) {
            ++next;
            break;
        }
        if (argument[0] != '-') break;  // the program
        if (!readOption(argc, argv, &next, options))
            options->error = std::string("unknown option '") + argument + "'";
    }
    if (stopped(*options)) return;
    if (next >= argc) {
        options->error = "no program given";
        return;
    }
    options->program.assign(argv + next, argv + argc);
    options->program.push_back(nullptr);
    options->command = Options::Command::run;
}

// attach [options] PID (first = 2), or [options] -pPID (first = 1).
void parseAttach(int argc, char **argv, int first, Options *options)
{
    const bool dashP = first == 1;
    for (int next = first; next < argc && !stopped(*options); ++next) {
        const char *argument = argv[next];
        if (readOption(argc, argv, &next, options)) continue;
        const bool isPid = dashP ? std::strncmp(argument, "-p", 2) == 0 : argument[0] != '-';
        if (!isPid)
            options->error =
                std::string(argument[0] == '-' ? "unknown option '" : "unexpected '") + argument + "'";
        else if (options->pid != 0)
            options->error = "more than one process id given";
        else
            takePid(dashP ? argument + 2 : argument, argument, options);
    }
    if (stopped(*options)) return;
    if (options->pid == 0) {
        options->error = "no process id given";
        return;
    }
    options->command = Options::Command::attach;
}

}  // namespace

Options parseOptions(int argc, char **argv)
{
    Options options;
    if (argc < 2) {
        options.error = "no command given";
        return options;
    }
    const char *command = argv[1];
    if (isHelp(command) || std::strcmp(command, "help") == 0)
        options.command = Options::Command::help;
    else if (std::strcmp(command, "run") == 0)
        parseRun(argc, argv, &options);
    else if (std::strcmp(command, "attach") == 0)
        parseAttach(argc, argv, 2, &options);
    else if (command[0] == '-')
        parseAttach(argc, argv, 1, &options);
    else
        options.error = std::string("unknown command '") + command + "'";
    return options;
}

}  // namespace tollan::monitor
