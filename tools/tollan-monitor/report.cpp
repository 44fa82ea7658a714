#include "report.h"

#include <cstdarg>

namespace tollan::monitor {

void Report::line(const char *format, ...) noexcept
{
    char text[4096];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    put(text);
}

void Report::line(const std::string &text) noexcept
{
    put(text.c_str());
}

void Report::put(const char *text) noexcept
{
    // One call per line, so that a line is never split by the program's output.
    std::fprintf(stream_, "tollan-monitor: %s\n", text);
    std::fflush(stream_);
}

}  // namespace tollan::monitor
