// The calling thread's break settings and report state: what the thread's
// reports look at before they format anything.
#pragma once

#include <cstdint>

namespace tollan::rtcheck {

struct ThreadReportState {
    bool started;  // the settings below were taken from the debugging level
    int32_t breakOnLibraryErrors;
    int32_t breakOnProtectionErrors;  // also switches pointer-check reports on
    int32_t breakOnFirstChanceExceptions;
    int32_t libraryBreaksSwitchedOff;  // the user's last SetBreakOnLibraryErrors said off
    int32_t evaluatingCondition;       // the debugger is evaluating a breakpoint condition
    bool hasErrorPosition;             // the report under way has a position of its own
    int32_t errorLine;
    int32_t errorColumn;
};

// The calling thread's state; on its first use the break settings start from
// the debugging level (startThreadBreakSettings).
ThreadReportState &threadReportState() noexcept;

// Sets the calling thread's break settings from the debugging level as it is
// now: break on library and protection errors on at level 2 and above, all
// off below it; break on first-chance exceptions off. Start-up calls it for
// the loading thread once the debugging level is known.
void startThreadBreakSettings() noexcept;

// Whether checking and reporting work at the present debugging level.
bool checkingLevel() noexcept;

// The debugger sets this around the evaluation of a breakpoint condition.
void setEvaluatingBreakpointCondition(bool evaluating) noexcept;

}  // namespace tollan::rtcheck
