#include "rtcheck/report_choice.h"

#include <cstring>

#include "rtcheck/report_message.h"
#include "services/messages.h"
#include "services/text_format.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kWarningTitle = 193;
constexpr int32_t kNonFatalTitle = 194;
constexpr int32_t kFatalTitle = 195;
constexpr int32_t kPositionedBody = 196;

}  // namespace

const char *reportTitle(int32_t severity) noexcept
{
    if (severity == 1) return services::libraryMessage(kWarningTitle);
    return services::libraryMessage(severity == 2 ? kNonFatalTitle : kFatalTitle);
}

void buildDialogBody(char *buffer, size_t size, const char *text, const SourcePosition &position) noexcept
{
    if (position.known && position.file != nullptr)
        formatMessage(buffer, size, kPositionedBody, position.file, static_cast<int>(position.firstLine),
                      static_cast<int>(position.firstColumn), text);
    else
        services::formatTextInto(buffer, size, "%s", text);
}

ReportChoice unattendedChoice(int32_t severity, const char *setting) noexcept
{
    if (setting != nullptr) {
        if (std::strcmp(setting, "break") == 0) return ReportChoice::breakIntoDebugger;
        if (std::strcmp(setting, "ignore") == 0) return ReportChoice::ignore;
        if (std::strcmp(setting, "terminate") == 0) return ReportChoice::terminate;
    }
    return severity >= 3 ? ReportChoice::terminate : ReportChoice::ignore;
}

void buildReportBody(char *buffer, size_t size, int32_t severity, const char *text,
                     const SourcePosition &position) noexcept
{
    const int written = services::formatTextInto(buffer, size, "%s\n", reportTitle(severity));
    if (written < 0 || static_cast<size_t>(written) >= size) return;
    buildDialogBody(buffer + written, size - static_cast<size_t>(written), text, position);
}

}  // namespace tollan::rtcheck
