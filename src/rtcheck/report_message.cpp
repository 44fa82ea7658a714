#include "rtcheck/report_message.h"

#include "services/messages.h"
#include "services/text_format.h"

namespace tollan::rtcheck {

int formatMessageList(char *buffer, size_t size, int32_t number, va_list arguments) noexcept
{
    return services::formatText(buffer, size, services::libraryMessage(number), arguments);
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
