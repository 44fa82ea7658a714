// The interactive step as the developer sees it: the dialog (Windows) or the
// terminal prompt (POSIX); standard error and TOLLAN_RTE_ACTION where there
// is nobody to ask.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <tollan/ansi_c.h>

#include "platform/developer_prompt.h"
#include "platform/system.h"
#include "rtcheck/report_choice.h"
#include "rtcheck/report_sink.h"
#include "services/messages.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kFatalTitle = 195;
constexpr int32_t kCannotShowDialog = 197;
constexpr int32_t kBreakLabel = 201;
constexpr int32_t kIgnoreLabel = 202;
constexpr int32_t kTerminateLabel = 203;
// The body holds the text and the position around it.
constexpr size_t kBodyRoomBeyondText = 772;
constexpr int kTerminateExitStatus = -1;

ReportChoice answerUnattended(int32_t severity, const char *text, const SourcePosition &position) noexcept
{
    char report[kReportLineSize];
    buildReportBody(report, sizeof report - 1, severity, text, position);
    // One write with its line end, so that reports of threads never mix.
    const size_t length = std::strlen(report);
    report[length] = '\n';
    report[length + 1] = '\0';
    tollan_fputs(report, tollan_standard_stream(2));
    return unattendedChoice(severity, std::getenv("TOLLAN_RTE_ACTION"));
}

}  // namespace

ReportChoice askDeveloper(int32_t severity, const char *text, const SourcePosition &position) noexcept
{
    char body[kReportTextSize + kBodyRoomBeyondText];
    const size_t bodyLimit = std::min(std::strlen(text) + kBodyRoomBeyondText, sizeof body);
    buildDialogBody(body, bodyLimit, text, position);
    const platform::ReportQuestion question{
        reportTitle(severity),
        body,
        bodyLimit,
        {services::libraryMessage(kBreakLabel), services::libraryMessage(kIgnoreLabel),
         services::libraryMessage(kTerminateLabel)},
        severity >= 3 ? platform::ReportAnswer::terminate : platform::ReportAnswer::ignore};
    switch (platform::askReport(question)) {
        case platform::ReportAnswer::breakIntoDebugger:
            return ReportChoice::breakIntoDebugger;
        case platform::ReportAnswer::ignore:
            return ReportChoice::ignore;
        case platform::ReportAnswer::terminate:
            return ReportChoice::terminate;
        case platform::ReportAnswer::nobodyToAsk:
            return answerUnattended(severity, text, position);
        case platform::ReportAnswer::cannotShow:
            break;
    }
    platform::showFatalMessage(services::libraryMessage(kFatalTitle),
                               services::libraryMessage(kCannotShowDialog));
    platform::exitProcess(kTerminateExitStatus);
}

}  // namespace tollan::rtcheck
