// Reading a floating-point number's text as strtod reads it, for the
// floating conversions of the scanf engine: the digits that matter and the
// exponent, ready for a correctly rounded conversion.
#pragma once

#include <cstddef>
#include <cstdint>

#include "stdc/scanf_input.h"

namespace tollan::stdc {

// Significant digits kept of a number's text; digits past these are folded
// into one (see FloatText::digits). A value halfway between two doubles has
// at most 768 significant digits, so the fold rounds alike for float and
// double; scanf_engine.h says where it does for long double.
inline constexpr size_t kKeptDigits = 800;

struct FloatText {
    enum class Kind { number, infinity, nan };
    Kind kind = Kind::number;
    bool negative = false;
    // The digits are hexadecimal and the exponent is binary (a "0x" form).
    bool hexadecimal = false;
    // The significant digits as written, without leading zeros; when digits
    // past kKeptDigits were dropped and one of them was not 0, a last '1'
    // stands for them. No digits: the number is zero.
    char digits[kKeptDigits + 1];
    size_t count = 0;
    // The value is digits (as an integer) times 10^exponent, or 2^exponent
    // when hexadecimal.
    int64_t exponent = 0;
};

// Reads the longest text the field holds that is, or begins, a number of
// strtod's form (sign, digits with point and exponent, 0x form, inf,
// infinity, nan, nan(...)) into `out`. The byte after it stays unread. A
// text that stops before the form is complete is a matching failure (or an
// input failure when the source ended before the field had a byte).
ScanOutcome readFloatText(ScanField &field, FloatText *out) noexcept;

}  // namespace tollan::stdc
