// Reports of the pointer checks and the library argument checks.
#include <cstdarg>

#include <tollan/rtcheck.h>

#include "rtcheck/break_settings.h"
#include "rtcheck/report_message.h"
#include "rtcheck/report_sink.h"
#include "services/messages.h"
#include "services/text_format.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kConditionMessage = 104;
constexpr int32_t kFirstArgumentMessage = 164;
constexpr int32_t kNoMessage = -1;

struct ErrorPosition {
    int32_t line;
    int32_t column;
};

// Formats message msgnum and reports it, when checking is on and the thread
// reports protection errors. position (null for none) is the report's own
// error position; a report raised while the debugger evaluates a breakpoint
// condition keeps none and says where it came from instead.
void reportCheckError(int32_t severity, int32_t msgnum, const ErrorPosition *position,
                      va_list arguments) noexcept
{
    if (!checkingLevel()) return;
    ThreadReportState &state = threadReportState();
    if (state.breakOnProtectionErrors == 0) return;
    char text[kReportTextSize];
    formatMessageList(text, sizeof text, msgnum, arguments);
    if (state.evaluatingCondition != 0) {
        char combined[kReportTextSize];
        services::formatTextInto(combined, sizeof combined, "%s : %s",
                                 services::libraryMessage(kConditionMessage), text);
        reportErrorMessage(severity, combined);
        return;
    }
    if (position != nullptr) {
        state.errorLine = position->line;
        state.errorColumn = position->column;
        state.hasErrorPosition = true;
    }
    reportErrorMessage(severity, text);
    // The position belonged to this report only.
    state.hasErrorPosition = false;
}

// 164 + code for code >= 0, 164 - code below; kNoMessage past the numbers.
int32_t argumentMessage(int32_t code) noexcept
{
    const int64_t number =
        code >= 0 ? kFirstArgumentMessage + int64_t{code} : kFirstArgumentMessage - int64_t{code};
    return number <= INT32_MAX ? static_cast<int32_t>(number) : kNoMessage;
}

}  // namespace
}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

void ReportUPError(int32_t severity, int32_t msgnum, int32_t line, int32_t col, ...) noexcept
{
    const ErrorPosition position{line, col};
    va_list arguments;
    va_start(arguments, col);
    reportCheckError(severity, msgnum, &position, arguments);
    va_end(arguments);
}

void _UPLibReportError(int32_t code, int32_t argpos, ...) noexcept
{
    va_list arguments;
    va_start(arguments, argpos);
    reportCheckError(code >= 0 ? ZOR_RTE_FATAL : ZOR_RTE_NON_FATAL, argumentMessage(code), nullptr,
                     arguments);
    va_end(arguments);
}
