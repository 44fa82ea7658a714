// Reading one real element of a Scan item, exactly (std::from_chars).
#pragma once

#include <cstdint>

#include "fmtio/fmt_conversion.h"
#include "fmtio/scan_text.h"

namespace tollan::fmtio {

// Reads a decimal number (fixed or with an exponent, or inf or nan) with an
// optional sign; white space before it is skipped as for integers. single:
// the element is a float. A value too small for the type becomes 0 (or the
// nearest denormal). Returns 0, kSourceEnded, 244 (the width holds no
// number), 251 (no number) or 248 (too big for the type).
int32_t scanReal(ScanText &text, const Conversion &conversion, double *value, bool single) noexcept;

}  // namespace tollan::fmtio
