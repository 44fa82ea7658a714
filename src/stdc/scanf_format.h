// Parsing one conversion of a scanf format.
#pragma once

#include "stdc/scanf_conversion.h"

namespace tollan::stdc {

// Parses the conversion whose '%' is at `percent` into `out`. Returns the
// format's position after it, or nullptr when the conversion is malformed
// (see scanf_engine.h): it ends inside the conversion, its conversion
// character is unknown, its size does not go with it, its width is 0 or
// starts with 0, %n has a width or '*', %% has anything between the two
// '%', a scanset has no closing ']' or (for %l[) is not UTF-8.
const char *parseScanConversion(const char *percent, ScanConversion *out) noexcept;

}  // namespace tollan::stdc
