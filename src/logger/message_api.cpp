// The exported writers of plain lines and assertion reports.
#include <cstdarg>

#include <tollan/logger.h>

#include "logger/line_buffer.h"
#include "logger/log.h"
#include "logger/writer.h"

using tollan::logger::LineBuffer;

void WriteZORLogMessage(uint32_t level, int32_t noLineEnd, int32_t echo, const char *file,
                        const char *function, int32_t line, const char *format, ...) noexcept
{
    // The message depends on the caller's arguments alone, so it is
    // formatted before the logger lock is taken.
    LineBuffer message;
    va_list args;
    va_start(args, format);
    message.appendFormatted(format, args);
    va_end(args);
    tollan::logger::emitLine(level, noLineEnd != 0, echo != 0, file, function, line, message);
}

void ZORAssert(const char *expression, const char *file, const char *function, int32_t line,
               const char *message, ...) noexcept
{
    LineBuffer text;
    if (message) {
        va_list args;
        va_start(args, message);
        text.appendFormatted(message, args);
        va_end(args);
    }
    tollan::logger::emitAssertion(expression, file, function, line, message ? text.data() : nullptr);
}

namespace tollan::logger {

void reportAssertion(const char *expression, const char *file, const char *function, int32_t line,
                     const char *message) noexcept
{
    emitAssertion(expression, file, function, line, message);
}

}  // namespace tollan::logger
