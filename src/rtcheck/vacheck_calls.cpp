// The open variable-argument checks of a thread, and the reports they make.
#include "rtcheck/vacheck_calls.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include <tollan/debugger.h>

#include "rtcheck/break_settings.h"
#include "rtcheck/pointer_info.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kInvalidArgumentTypeMessage = 106;
constexpr int32_t kMissingArgumentMessage = 107;
constexpr int32_t kTooManyArgumentsMessage = 108;

// A check copies what it needs from the hand-over area when it opens, so
// that checked calls made before it closes cannot change its arguments.
struct OpenCheck {
    bool active;     // the arguments are checked
    bool settled;    // reported or abandoned: nothing more is checked or reported
    int32_t passed;  // the call's variable arguments; the first kRecordedVariadicParameters have types
    int32_t next;    // the number (from 1) of the next argument to check
    TypeSizeInfo types[kRecordedVariadicParameters];
    ArgumentCoordinate coordinates[kRecordedVariadicParameters];  // line 0: not handed over
};

// Checks open inside one another: a check opened by code that interrupts a
// wrapper between its open and its close. Deeper ones are counted, so that
// opens and closes still pair, but check nothing.
constexpr int32_t kDeepestOpenCheck = 4;

struct OpenChecks {
    int32_t depth;
    OpenCheck checks[kDeepestOpenCheck];
};

// A plain per-thread value: nothing to allocate on the path of every checked
// printf, nothing to free when the thread ends.
constinit thread_local OpenChecks openChecks{};

OpenCheck *innermostCheck() noexcept
{
    if (openChecks.depth < 1 || openChecks.depth > kDeepestOpenCheck) return nullptr;
    return &openChecks.checks[openChecks.depth - 1];
}

OpenCheck *checkingCheck() noexcept
{
    OpenCheck *check = innermostCheck();
    return check != nullptr && check->active && !check->settled ? check : nullptr;
}

bool reportsProtectionErrors() noexcept
{
    return checkingLevel() && threadReportState().breakOnProtectionErrors != 0;
}

// Copies the recorded types out of the environment's bytes, where compiled
// code wrote them, without assuming that an object lives there.
void copyRecordedArguments(OpenCheck &check, int32_t argpos, const ParameterArea &area) noexcept
{
    const unsigned char *variadic =
        reinterpret_cast<const unsigned char *>(&area) + kVariadicParameterTypesOffset;
    std::memcpy(&check.passed, variadic + offsetof(VariadicParameterTypes, count), sizeof check.passed);
    std::memcpy(check.types, variadic + offsetof(VariadicParameterTypes, types), sizeof check.types);
    const int32_t coordinates = std::min(area.coordinateCount, kParameterSlots);
    for (int32_t k = 0; k < kRecordedVariadicParameters; ++k) {
        const int64_t index = int64_t{argpos} - 1 + k;
        check.coordinates[k] =
            argpos >= 1 && index < coordinates ? area.coordinates[index] : ArgumentCoordinate{};
    }
}

// Where argument `number` stands in the source: its own coordinate when the
// caller handed it over, else the thread's statement.
ArgumentCoordinate positionOf(const OpenCheck &check, int32_t number) noexcept
{
    if (number >= 1 && number <= kRecordedVariadicParameters && check.coordinates[number - 1].line != 0)
        return check.coordinates[number - 1];
    const ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    return record != nullptr ? ArgumentCoordinate{record->location.line, record->location.column}
                             : ArgumentCoordinate{};
}

}  // namespace

bool openVariadicCheck(int32_t argpos, const void *frame) noexcept
{
    ++openChecks.depth;
    OpenCheck *check = innermostCheck();
    if (check == nullptr) return false;
    check->active = false;
    check->settled = false;
    // Below the checking level nothing more is done: this is the path of every printf.
    if (!reportsProtectionErrors()) return false;
    const ParameterArea *area = parameterArea();
    if (area == nullptr || area->callee == nullptr || frame == nullptr ||
        followJumpStubs(area->callee) != followJumpStubs(frame))
        return false;
    copyRecordedArguments(*check, argpos, *area);
    check->next = 1;
    // A negative count is no count the compiler writes: leave such a call alone.
    check->active = check->passed >= 0;
    return check->active;
}

bool checkNextArgument(const TypeView &expected) noexcept
{
    OpenCheck *check = checkingCheck();
    if (check == nullptr) return true;
    const int32_t number = check->next;
    if (number > check->passed) {
        check->settled = true;
        const ArgumentCoordinate at = positionOf(*check, check->passed);
        ReportUPError(ZOR_RTE_FATAL, kMissingArgumentMessage, at.line, at.column);
        return false;
    }
    ++check->next;
    if (number > kRecordedVariadicParameters) return true;
    const TypeView found = recordedType(check->types[number - 1]);
    if (argumentFits(found, expected)) return true;
    check->settled = true;
    const PrintableType foundText(found);
    const PrintableType expectedText(expected);
    if (foundText.node() == nullptr || expectedText.node() == nullptr) return true;
    const ArgumentCoordinate at = positionOf(*check, number);
    ReportUPError(ZOR_RTE_FATAL, kInvalidArgumentTypeMessage, at.line, at.column, foundText.node(),
                  expectedText.node());
    return false;
}

bool isCheckingArguments() noexcept
{
    return checkingCheck() != nullptr;
}

bool argumentsRemain() noexcept
{
    const OpenCheck *check = checkingCheck();
    return check != nullptr && check->next <= check->passed;
}

void abandonVariadicCheck() noexcept
{
    if (OpenCheck *check = innermostCheck()) check->settled = true;
}

bool closeVariadicCheck() noexcept
{
    if (openChecks.depth < 1) return true;
    bool quiet = true;
    if (argumentsRemain()) {
        const OpenCheck &check = *innermostCheck();
        const ArgumentCoordinate at = positionOf(check, check.next);
        ReportUPError(ZOR_RTE_NON_FATAL, kTooManyArgumentsMessage, at.line, at.column);
        quiet = false;
    }
    --openChecks.depth;
    return quiet;
}

}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

int32_t _UPLibBeginChkVaArgs(int32_t argpos, const void *frame) noexcept
{
    return openVariadicCheck(argpos, frame) ? 1 : 0;
}

int32_t _UPLibChkVaArg(const Tynode *expected) noexcept
{
    return checkNextArgument(TypeView{expected, 0}) ? 1 : 0;
}

int32_t _UPLibChkVaArgEx(const Tynode *expected, int32_t count) noexcept
{
    // Stops as soon as nothing is checked, whatever count says.
    for (int32_t checked = 0; count < 0 ? argumentsRemain() : checked < count && isCheckingArguments();
         ++checked)
        if (!checkNextArgument(TypeView{expected, 0})) return 0;
    return 1;
}

int32_t _UPLibEndChkVaArgs(void) noexcept
{
    return closeVariadicCheck() ? 1 : 0;
}
