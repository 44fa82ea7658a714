#include "rtcheck/break_settings.h"

#include <tollan/rtcheck.h>

#include "debugger/debugging_level.h"

namespace tollan::rtcheck {
namespace {

// A plain per-thread value: nothing to free at thread exit, and no slot of
// the thread-variable scheme to reserve at start-up.
constinit thread_local ThreadReportState threadState{};

int32_t reducedToFlag(int32_t on) noexcept
{
    return on != 0 ? 1 : 0;
}

// Stores a setting and gives back the previous one.
int32_t exchange(int32_t &setting, int32_t on) noexcept
{
    const int32_t previous = setting;
    setting = reducedToFlag(on);
    return previous;
}

}  // namespace

bool checkingLevel() noexcept
{
    return debugger::debuggingLevel() >= debugger::kCheckingLevel;
}

void startThreadBreakSettings() noexcept
{
    const int32_t on = checkingLevel() ? 1 : 0;
    threadState.breakOnLibraryErrors = on;
    threadState.breakOnProtectionErrors = on;
    threadState.breakOnFirstChanceExceptions = 0;
    threadState.started = true;
}

ThreadReportState &threadReportState() noexcept
{
    if (!threadState.started) startThreadBreakSettings();
    return threadState;
}

void setEvaluatingBreakpointCondition(bool evaluating) noexcept
{
    threadReportState().evaluatingCondition = evaluating ? 1 : 0;
}

}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

// Every call takes the thread's state first, so that a thread's settings
// start from the level of its first call, whatever that call is.

int32_t SetBreakOnLibraryErrors(int32_t on) noexcept
{
    ThreadReportState &state = threadReportState();
    state.libraryBreaksSwitchedOff = on == 0 ? 1 : 0;
    if (!checkingLevel()) return 0;
    return exchange(state.breakOnLibraryErrors, on);
}

int32_t GetBreakOnLibraryErrors(void) noexcept
{
    const ThreadReportState &state = threadReportState();
    return checkingLevel() ? state.breakOnLibraryErrors : 0;
}

void EnableBreakOnLibraryErrors(void) noexcept
{
    SetBreakOnLibraryErrors(1);
}

void DisableBreakOnLibraryErrors(void) noexcept
{
    SetBreakOnLibraryErrors(0);
}

int32_t SetBreakOnProtectionErrors(int32_t on) noexcept
{
    ThreadReportState &state = threadReportState();
    if (!checkingLevel()) return 0;
    return exchange(state.breakOnProtectionErrors, on);
}

int32_t GetBreakOnProtectionErrors(void) noexcept
{
    const ThreadReportState &state = threadReportState();
    return checkingLevel() ? state.breakOnProtectionErrors : 0;
}

int32_t SetBreakOnFirstChanceExceptions(int32_t on) noexcept
{
    return exchange(threadReportState().breakOnFirstChanceExceptions, on);
}

int32_t GetBreakOnFirstChanceExceptions(void) noexcept
{
    const ThreadReportState &state = threadReportState();
    return checkingLevel() ? state.breakOnFirstChanceExceptions : 0;
}
