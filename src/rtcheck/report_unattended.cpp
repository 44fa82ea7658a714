// The interactive step as it stands for a process that nobody can be asked
// in: the report goes to standard error and TOLLAN_RTE_ACTION answers it. A
// dialog (Windows) or a terminal prompt (POSIX) takes this function's place
// where there is someone to ask, and keeps this answer where there is not.
#include <cstdlib>
#include <cstring>

#include <tollan/ansi_c.h>

#include "rtcheck/report_choice.h"
#include "rtcheck/report_sink.h"

namespace tollan::rtcheck {

ReportChoice askDeveloper(int32_t severity, const char *text, const SourcePosition &position) noexcept
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

}  // namespace tollan::rtcheck
