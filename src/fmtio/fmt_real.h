// Writing one real element of a Fmt item, exactly (std::to_chars): fixed or
// exponential notation, the precision or else the shortest digits that read
// back to the same value, exponent digits, trimmed zeros, width.
#pragma once

#include <cstdint>

#include "fmtio/fmt_bytes.h"
#include "fmtio/fmt_conversion.h"

namespace tollan::fmtio {

// single: the element is a float (its shortest digits are those of the
// float). Returns 0, or 249 when the text does not fit the width.
int32_t formatReal(ByteBuffer &out, const Conversion &conversion, double value, bool single) noexcept;

}  // namespace tollan::fmtio
