// Building and writing one line: the step shared by messages, timing events
// and assertions.
#pragma once

#include <cstdint>

#include "logger/line_buffer.h"

namespace tollan::logger {

// Under the logger lock, builds the line for `message` from the template,
// writes it to the output (ended and flushed unless noLineEnd) and, with
// echo, prints the message alone to standard output.
void emitLine(uint32_t level, bool noLineEnd, bool echo, const char *file, const char *function, int32_t line,
              const LineBuffer &message) noexcept;

// The FATAL line "Assertion failed: <expression> (<message>)", or without
// the parenthesis when message is null, cut at 1023 characters.
void emitAssertion(const char *expression, const char *file, const char *function, int32_t line,
                   const char *message) noexcept;

}  // namespace tollan::logger
