#include "rtcheck/report_message.h"

#include "services/messages.h"
#include "services/printf_engine.h"

namespace tollan::rtcheck {

int formatMessageList(char *buffer, size_t size, int32_t number, va_list arguments) noexcept
{
    // The engine itself: the table's texts are no literals for -Wformat to check.
    return services::printToBuffer(buffer, size, services::libraryMessage(number), arguments);
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
