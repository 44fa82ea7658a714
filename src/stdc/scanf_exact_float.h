// The library's own correctly rounded reader of a number's digits, for the
// floating-point types whose std::from_chars is not exact in both builds
// (long double: mingw-w64's reads it through double). It works on big
// integers: the digits times a power of ten, or divided by one to 70-odd
// bits, then rounded to nearest, ties to even.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "stdc/scanf_big_number.h"
#include "stdc/scanf_float_text.h"

namespace tollan::stdc {
namespace exact_float {

using Widest = long double;
static_assert(std::numeric_limits<Widest>::digits <= 64, "the mantissa is kept in 64 bits");

// A decimal number below 10^(this - 1) is below half the smallest denormal
// of the type: log10 of the smallest denormal is at least min_exponent10 -
// digits10 - 2.
template <typename T>
constexpr int64_t kZeroBelowDecimal =
    std::numeric_limits<T>::min_exponent10 - std::numeric_limits<T>::digits10 - 3;

// The integers hold what the widest type needs: the largest divisor, a
// power of ten with the kept digits (and the folded one) past the least
// exponent that is not surely zero, times a quotient's bits (log2(10) <
// 3.322); the largest product (below 10^(max_exponent10 + 1)) is smaller.
inline constexpr int64_t kQuotientBits = std::numeric_limits<Widest>::digits + 3;
inline constexpr int64_t kLargestDivisorDigits =
    static_cast<int64_t>(kKeptDigits) + 1 - kZeroBelowDecimal<Widest>;
inline constexpr int64_t kLargestBits = kLargestDivisorDigits * 3322 / 1000 + 1 + kQuotientBits + 64;
static_assert((std::numeric_limits<Widest>::max_exponent10 + 1) * 3322 / 1000 + 1 < kLargestBits);
inline constexpr size_t kLimbs = static_cast<size_t>(kLargestBits / 32 + 1);
using Number = BigNumber<kLimbs>;
using Quotient = BigNumber<(kQuotientBits + 1) / 32 + 1>;

// The value nearest to (q + a bit below its last when `sticky`) * 2^exponent,
// ties to even. *outOfRange when that is 0 or past the largest (the result
// is then 0 or infinity).
template <typename T, typename Integer>
T roundToNearest(const Integer &q, int64_t exponent, bool sticky, bool *outOfRange) noexcept
{
    constexpr int kDigits = std::numeric_limits<T>::digits;
    // The exponents of the mantissa's last bit at the smallest denormal and
    // at the largest value.
    constexpr int64_t kLeast = std::numeric_limits<T>::min_exponent - kDigits;
    constexpr int64_t kLargest = std::numeric_limits<T>::max_exponent - kDigits;
    constexpr uint64_t kAllOnes = ~uint64_t{0} >> (64 - kDigits);
    int64_t last = static_cast<int64_t>(q.bitLength()) + exponent - kDigits;
    if (last < kLeast) last = kLeast;
    const int64_t dropped = last - exponent;  // bits of q below the mantissa
    uint64_t mantissa = 0;
    if (dropped <= 0) {
        mantissa = q.bitsAt(0) << -dropped;
    } else {
        mantissa = q.bitsAt(static_cast<size_t>(dropped));
        const bool half = q.bit(static_cast<size_t>(dropped - 1));
        const bool rest = sticky || q.anyBitBelow(static_cast<size_t>(dropped - 1));
        if (half && (rest || (mantissa & 1) != 0)) {
            if (mantissa == kAllOnes) {
                mantissa = uint64_t{1} << (kDigits - 1);
                ++last;
            } else {
                ++mantissa;
            }
        }
    }
    if (mantissa == 0 || last > kLargest) {
        *outOfRange = true;
        return mantissa == 0 ? T(0) : std::numeric_limits<T>::infinity();
    }
    return std::ldexp(static_cast<T>(mantissa), static_cast<int>(last));
}

// digits / 10^-exponent for a negative exponent, through a quotient of
// kQuotientBits or one more and whether a remainder was left.
template <typename T>
T dividedValue(Number digits, int64_t exponent, bool *outOfRange) noexcept
{
    Number divisor(1);
    divisor.multiplyByPowerOfTen(static_cast<uint64_t>(-exponent));
    // digits * 2^scale / divisor has kQuotientBits or one more.
    const int64_t scale =
        kQuotientBits + static_cast<int64_t>(divisor.bitLength()) - static_cast<int64_t>(digits.bitLength());
    if (scale >= 0)
        digits.shiftLeft(static_cast<size_t>(scale));
    else
        divisor.shiftLeft(static_cast<size_t>(-scale));
    // Long division, one quotient bit at a time from the top; what remains
    // of the digits is the remainder.
    Quotient quotient;
    const size_t quotientBits = digits.bitLength() - divisor.bitLength() + 1;
    divisor.shiftLeft(quotientBits - 1);
    for (size_t bit = quotientBits; bit-- > 0; divisor.shiftRightByOne()) {
        if (digits.compare(divisor) < 0) continue;
        digits.subtract(divisor);
        quotient.setBit(bit);
    }
    return roundToNearest<T>(quotient, -scale, !digits.isZero(), outOfRange);
}

}  // namespace exact_float

// The value of `text` (a number with at least one significant digit; its
// sign is left to the caller) as a T, correctly rounded: to nearest, ties to
// even. *outOfRange when it rounds to 0 or past the largest T (the result
// is then 0 or infinity).
template <typename T>
T exactFloat(const FloatText &text, bool *outOfRange) noexcept
{
    using namespace exact_float;
    static_assert(std::numeric_limits<T>::min_exponent10 >= std::numeric_limits<Widest>::min_exponent10 &&
                  std::numeric_limits<T>::max_exponent10 <= std::numeric_limits<Widest>::max_exponent10);
    using Limits = std::numeric_limits<T>;
    const auto count = static_cast<int64_t>(text.count);
    Number digits;
    for (size_t i = 0; i < text.count; ++i) {
        const char digit = text.digits[i];
        const int value = digit <= '9' ? digit - '0' : (digit | 0x20) - 'a' + 10;
        digits.multiplyAdd(text.hexadecimal ? 16 : 10, static_cast<uint32_t>(value));
    }
    // Far outside the range the answer is known, and the integers would not
    // hold the powers. The value is below base^below and at least
    // base^(below - 1 digit), in powers of 2 (hexadecimal) or 10.
    const int64_t below = (text.hexadecimal ? 4 * count : count) + text.exponent;
    const int64_t atLeast = below - (text.hexadecimal ? 4 : 1);
    const bool surelyLarger =
        text.hexadecimal ? atLeast >= Limits::max_exponent : atLeast > Limits::max_exponent10;
    const bool surelyZero =
        text.hexadecimal ? below < Limits::min_exponent - Limits::digits - 1 : below < kZeroBelowDecimal<T>;
    if (surelyLarger || surelyZero) {
        *outOfRange = true;
        return surelyZero ? T(0) : Limits::infinity();
    }
    if (text.hexadecimal) return roundToNearest<T>(digits, text.exponent, false, outOfRange);
    if (text.exponent < 0) return dividedValue<T>(digits, text.exponent, outOfRange);
    digits.multiplyByPowerOfTen(static_cast<uint64_t>(text.exponent));
    return roundToNearest<T>(digits, 0, false, outOfRange);
}

}  // namespace tollan::stdc
