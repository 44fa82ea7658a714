// The text conversions of the scanf engine: %c, %s and %[, with bytes
// stored as they are or (size l) read as UTF-8 into wchar_t.
#pragma once

#include "stdc/scanf_conversion.h"
#include "stdc/scanf_input.h"

namespace tollan::stdc {

// %c and %lc: exactly the width's bytes (without a width, one byte for %c
// and one character for %lc), no white-space skip, no terminator.
ScanOutcome scanCharacters(ScanInput &input, const ScanConversion &conversion,
                           ScanArguments &arguments) noexcept;

// %s and %ls (after skipping white space) and %[ and %l[: the longest run
// of members that fits the width, at least one, terminated.
ScanOutcome scanRun(ScanInput &input, const ScanConversion &conversion, ScanArguments &arguments) noexcept;

}  // namespace tollan::stdc
