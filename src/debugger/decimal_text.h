// Unsigned numbers in decimal, written straight into a buffer that has room
// for them: the resource dump writes four to seven numbers a line, too many
// for a call into the C++ library each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tollan::debugger {

inline constexpr size_t kLongestDecimal = 20;  // the digits of 2^64 - 1

// The texts "00" to "99", one after the other: the digits go two at a time.
struct DigitPairs {
    char text[200];
};

constexpr DigitPairs makeDigitPairs() noexcept
{
    DigitPairs pairs{};
    for (int i = 0; i < 100; ++i) {
        pairs.text[2 * i] = static_cast<char>('0' + i / 10);
        pairs.text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}

inline constexpr DigitPairs kDigitPairs = makeDigitPairs();

// Writes the digits of value at `at`, which has room for kLongestDecimal
// bytes, without a terminator; returns the end of the digits.
inline char *putDecimal(char *at, uint64_t value) noexcept
{
    if (value < 10) {
        *at = static_cast<char>('0' + value);
        return at + 1;
    }
    size_t digits = 2;
    for (uint64_t limit = 100; digits < kLongestDecimal && value >= limit; limit *= 10) ++digits;
    char *const end = at + digits;
    char *pair = end;
    for (; value >= 100; value /= 100) {
        pair -= 2;
        std::memcpy(pair, kDigitPairs.text + value % 100 * 2, 2);
    }
    if (value >= 10)
        std::memcpy(pair - 2, kDigitPairs.text + value * 2, 2);
    else
        pair[-1] = static_cast<char>('0' + value);
    return end;
}

}  // namespace tollan::debugger
