// Reading one integer element of a Scan item: digits in radix 8, 10 or 16
// with an optional sign, checked against the element's size, or raw bytes
// in the item's byte order.
#pragma once

#include <cstdint>

#include "fmtio/fmt_conversion.h"
#include "fmtio/scan_text.h"

namespace tollan::fmtio {

// Without width, white space and pad characters before the number are
// skipped; with a width w the number lies within the next w bytes, which may
// begin with white space and pad characters (as Fmt pads them).
// *bits receives the value in two's complement. Returns 0, kSourceEnded,
// 244 (the width holds no digits), 245 (no digits), 246 (too big for the
// size unsigned) or 247 (too big for the size signed).
int32_t scanInteger(ScanText &text, const Conversion &conversion, uint64_t *bits) noexcept;

}  // namespace tollan::fmtio
