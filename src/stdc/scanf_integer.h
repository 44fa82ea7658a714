// The integer conversions of the scanf engine (d i o u x X p) and the one
// way integers are stored (they and %n).
#pragma once

#include <cstdint>

#include "stdc/scanf_conversion.h"
#include "stdc/scanf_input.h"

namespace tollan::stdc {

// Skips white space and reads the integer of `conversion` (d, i, o, u, x,
// X or p) as scanf_engine.h describes, storing it unless suppressed.
ScanOutcome scanInteger(ScanInput &input, const ScanConversion &conversion,
                        ScanArguments &arguments) noexcept;

// Stores the low bits of `bits` through the next argument, a pointer to the
// signed or unsigned type of `size` (int for normal).
void storeInteger(ScanArguments &arguments, ScanSize size, bool isSigned, uint64_t bits) noexcept;

}  // namespace tollan::stdc
