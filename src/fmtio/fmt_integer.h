// Writing one integer element of a Fmt item: digits in radix 8, 10 or 16
// with sign, width and pad character, or raw bytes in the item's byte order.
#pragma once

#include <cstdint>

#include "fmtio/fmt_bytes.h"
#include "fmtio/fmt_conversion.h"

namespace tollan::fmtio {

// The value as the element holds it: bits has the element's size in bytes
// (the rest is ignored); the item says whether they are signed.
// Returns 0, or 249 when the digits do not fit the width.
int32_t formatInteger(ByteBuffer &out, const Conversion &conversion, uint64_t bits) noexcept;

// The value widened to 64 bits: sign-extended when the item is signed,
// zero-extended otherwise.
uint64_t widenInteger(uint64_t bits, int64_t size, bool isSigned) noexcept;

}  // namespace tollan::fmtio
