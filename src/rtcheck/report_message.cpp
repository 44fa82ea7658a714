#include "rtcheck/report_message.h"

#include <algorithm>
#include <cstring>

#include <tollan/rtcheck.h>

#include "services/messages.h"
#include "services/printf_engine.h"

namespace tollan::rtcheck {
namespace {

// The messages that name types ("found '%t', expected '%t'") take a
// const Tynode * for each %t and have no other conversion; they are written
// here, each type as outtype writes it. Returns the whole text's length, as
// printToBuffer does, however much of it fitted.
int formatTypeMessage(char *buffer, size_t size, const char *text, va_list arguments) noexcept
{
    size_t length = 0;
    auto room = [&] { return length < size ? size - length : 0; };
    for (const char *at = text; *at != '\0'; ++at) {
        if (at[0] == '%' && at[1] == 't') {
            // The caller started the list; the analyzer cannot see into it.
            const Tynode *type =
                va_arg(arguments, const Tynode *);  // NOLINT(clang-analyzer-valist.Uninitialized)
            length += outtype(type, buffer + (size == 0 ? 0 : std::min(length, size - 1)), room());
            ++at;
            continue;
        }
        if (length + 1 < size) buffer[length] = *at;
        ++length;
    }
    if (size != 0) buffer[std::min(length, size - 1)] = '\0';
    return static_cast<int>(length);
}

}  // namespace

int formatMessageList(char *buffer, size_t size, int32_t number, va_list arguments) noexcept
{
    const char *text = services::libraryMessage(number);
    if (std::strstr(text, "%t") != nullptr) return formatTypeMessage(buffer, size, text, arguments);
    // The engine itself: the table's texts are no literals for -Wformat to check.
    return services::printToBuffer(buffer, size, text, arguments);
}

int formatMessage(char *buffer, size_t size, int32_t number, ...) noexcept
{
    va_list arguments;
    va_start(arguments, number);
    const int length = formatMessageList(buffer, size, number, arguments);
    va_end(arguments);
    return length;
}

}  // namespace tollan::rtcheck
