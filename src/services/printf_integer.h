// Integer conversions (d i o u x X) and %p.
#pragma once

#include <cstdint>

#include "services/printf_conversion.h"
#include "services/printf_output.h"

namespace tollan::services::formatting {

// Writes an integer given as its magnitude and sign (negative only for d
// and i) with the conversion's flags, width and precision.
bool putInteger(Output &out, const Conversion &conversion, uint64_t magnitude, bool negative) noexcept;

// Writes a pointer in the library's one form (pointerText): width and '-'
// apply, other flags and a precision do not.
bool putPointer(Output &out, const Conversion &conversion, const void *pointer) noexcept;

}  // namespace tollan::services::formatting
