// The developer's answer to a run-time error report, and the texts the
// report shows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rtcheck/report_position.h"

namespace tollan::rtcheck {

enum class ReportChoice { breakIntoDebugger, ignore, terminate };

// The interactive step of a report that no debugger takes: asks the developer
// what to do about the report and returns the answer. Where nobody can be
// asked, it writes the report to standard error and answers with
// unattendedChoice for the setting TOLLAN_RTE_ACTION.
ReportChoice askDeveloper(int32_t severity, const char *text, const SourcePosition &position) noexcept;

// The answer for a process that nobody watches: the setting's "break",
// "ignore" or "terminate"; for anything else (null among it) "terminate" at
// severity 3 and above and "ignore" below.
ReportChoice unattendedChoice(int32_t severity, const char *setting) noexcept;

// The report as it is shown, terminated in buffer (cut at size): its title
// by severity ("Run-time Warning" for 1, "Non-Fatal Run-time Error" for 2,
// "Fatal Run-time Error" otherwise), a line end, then the text, behind
// "File "<file>", line <n>, column <n>:" and an empty line when the source
// position and its file are known.
void buildReportBody(char *buffer, size_t size, int32_t severity, const char *text,
                     const SourcePosition &position) noexcept;

}  // namespace tollan::rtcheck
