#include "engine/command_line.h"

#include <cstdlib>

namespace tollan::engine {
namespace {

bool isBlank(char c) noexcept
{
    return c == ' ' || c == '\t';
}

}  // namespace

int splitCommandLine(char *text, char **argv, LeadBytePredicate isLeadByte) noexcept
{
    const bool fill = argv != nullptr;
    int count = 0;
    char *p = text;
    for (;;) {
        while (isBlank(*p)) ++p;
        if (*p == '\0') return count;
        const bool quoted = *p == '"';
        if (quoted) ++p;
        char *start = p;
        while (*p != '\0' && (quoted ? *p != '"' : !isBlank(*p))) p += characterWidth(p, isLeadByte);
        if (*p != '\0') {
            if (fill) *p = '\0';
            ++p;
        }
        if (fill) argv[count] = start;
        ++count;
    }
}

bool ParseCommandLine(char *commandLine, LeadBytePredicate isLeadByte, CommandLineArguments *out) noexcept
{
    *out = {};
    const int count = splitCommandLine(commandLine, nullptr, isLeadByte);
    if (count == 0) return true;
    auto **argv = static_cast<char **>(std::calloc(static_cast<size_t>(count) + 1, sizeof(char *)));
    if (argv == nullptr) return false;
    out->argc = splitCommandLine(commandLine, argv, isLeadByte);
    out->argv = argv;
    return true;
}

void freeArguments(CommandLineArguments *arguments) noexcept
{
    std::free(arguments->argv);
    *arguments = {};
}

}  // namespace tollan::engine
