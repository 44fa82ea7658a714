// Run-time error reporting lies above the debugger link, which raises one
// run-time error of its own: the inconsistent stack of
// __DBG_ReportStackCorruption. Start-up hands the reporter down.
#pragma once

#include <cstdint>

namespace tollan::debugger {

// ReportUPError's shape: severity, message number, line and column of the
// error position, the message's arguments.
using RunTimeErrorReporter = void (*)(int32_t severity, int32_t message, int32_t line, int32_t column,
                                      ...) noexcept;

// Until a reporter is set, the debugger link's run-time errors go unreported.
void setRunTimeErrorReporter(RunTimeErrorReporter reporter) noexcept;

}  // namespace tollan::debugger
