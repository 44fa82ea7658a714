// Floating conversions (f F e E g G a A) through std::to_chars: correctly
// rounded, locale-free, and alike on every platform.
#pragma once

#include "services/printf_conversion.h"
#include "services/printf_output.h"

namespace tollan::services::formatting {

// Writes a double (or, for L, a long double) with the conversion's flags,
// width and precision. False, besides the Output's failures, with errno
// ENOMEM when a long double's digits need more room than the stack block
// and the library heap has none.
bool putFloat(Output &out, const Conversion &conversion, double value) noexcept;
bool putFloat(Output &out, const Conversion &conversion, long double value) noexcept;

}  // namespace tollan::services::formatting
