// Splitting a command line into arguments.
#pragma once

#include "engine/lead_byte.h"

namespace tollan::engine {

// Splits text at blanks (spaces and tabs). An argument that starts with a
// double quote runs to the next double quote, or to the end of the text when
// none follows; the quotes are not part of it. Under a multibyte code page
// the text is walked by characters, so a trail byte never ends an argument.
// With argv null only counts; otherwise stores each argument's start in argv
// (room for the count) and ends each argument in place with a terminator.
// Returns the number of arguments.
int splitCommandLine(char *text, char **argv, LeadBytePredicate isLeadByte) noexcept;

struct CommandLineArguments {
    int argc = 0;
    char **argv = nullptr;  // argc entries and a null; null when argc is 0
};

// Counts, then (when there is an argument) fills a new argument array.
// False when the array cannot be allocated. Free with freeArguments.
bool ParseCommandLine(char *commandLine, LeadBytePredicate isLeadByte, CommandLineArguments *out) noexcept;
void freeArguments(CommandLineArguments *arguments) noexcept;

}  // namespace tollan::engine
