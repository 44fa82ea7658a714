// The developer's answer to a run-time error report, and the texts the
// report shows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rtcheck/report_position.h"

namespace tollan::rtcheck {

enum class ReportChoice { breakIntoDebugger, ignore, terminate };

// The interactive step of a report that no debugger takes: asks the developer
// what to do about the report (a dialog, or a prompt on the terminal) and
// returns the answer. Where nobody can be asked, it writes the report to
// standard error and answers with unattendedChoice for the setting
// TOLLAN_RTE_ACTION. When the dialog cannot be made it says so and ends the
// process with -1.
ReportChoice askDeveloper(int32_t severity, const char *text, const SourcePosition &position) noexcept;

// The report's title by severity: "Run-time Warning" for 1, "Non-Fatal
// Run-time Error" for 2, "Fatal Run-time Error" otherwise.
const char *reportTitle(int32_t severity) noexcept;

// The body the developer is shown, terminated in buffer (cut at size): the
// text behind "File "<file>", line <n>, column <n>:" and an empty line when
// the source position and its file are known, else the text alone.
void buildDialogBody(char *buffer, size_t size, const char *text, const SourcePosition &position) noexcept;

// The answer for a process that nobody watches: the setting's "break",
// "ignore" or "terminate"; for anything else (null among it) "terminate" at
// severity 3 and above and "ignore" below.
ReportChoice unattendedChoice(int32_t severity, const char *setting) noexcept;

// The report as standard error shows it, terminated in buffer (cut at
// size): its title, a line end, then its body.
void buildReportBody(char *buffer, size_t size, int32_t severity, const char *text,
                     const SourcePosition &position) noexcept;

}  // namespace tollan::rtcheck
