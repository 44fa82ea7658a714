// The calling thread's open variable-argument checks: what
// _UPLibBeginChkVaArgs opens, the per-argument step that both the
// wrappers' own calls and the format walks take, and _UPLibEndChkVaArgs.
#pragma once

#include <cstdint>

#include "rtcheck/vacheck_types.h"

namespace tollan::rtcheck {

// Opens a check of the variable arguments of the current call to `frame`,
// the first of which is argument `argpos` of the call. True when the
// arguments will be checked: the debugging level is 2 or more, the thread
// reports protection errors, and the types that the caller recorded belong
// to a call of `frame` (after jump stubs). Every open must be closed.
bool openVariadicCheck(int32_t argpos, const void *frame) noexcept;

// Checks the next argument of the innermost open check against `expected`.
// False when it was reported: 107 when no argument is left, 106 when it
// does not fit. After a report the rest of the call is not checked.
bool checkNextArgument(const TypeView &expected) noexcept;

// Whether the innermost check is checking: open, active and not settled.
bool isCheckingArguments() noexcept;

// Whether the innermost check has recorded arguments that no check took.
bool argumentsRemain() noexcept;

// The innermost check stops checking: what its arguments should be is not
// known (a format that does not parse), so closing it reports nothing.
void abandonVariadicCheck() noexcept;

// Closes the innermost check; reports 108 when arguments are left that no
// check took. False when it was reported.
bool closeVariadicCheck() noexcept;

}  // namespace tollan::rtcheck
