// Formatting one parameter-taking item into bytes: a Fmt source, or a Scan
// source that is not a string (it is formatted first, then read).
#pragma once

#include <cstdint>

#include "fmtio/fmt_bytes.h"
#include "fmtio/fmt_conversion.h"

namespace tollan::fmtio {

// value: the argument. A scalar integer or real of Fmt's second half
// arrives by value (byValue); arrays, z items, strings and every Scan source
// arrive as pointers. Array elements are joined by the item's j characters,
// by a comma when none were given, and by nothing when the item is binary.
// Returns 0, 255 for a null pointer, or the converter's message number.
int32_t formatParameter(ByteBuffer &out, const Conversion &conversion, const ArgumentValue &value,
                        bool byValue) noexcept;

}  // namespace tollan::fmtio
