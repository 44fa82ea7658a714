// Unsigned numbers in decimal, written straight into a buffer that has room
// for them: the resource dump writes four to seven numbers a line, too many
// for a call into the C++ library each.
#pragma once

#include <bit>
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

// 10 to the power of the index, for counting digits.
inline constexpr uint64_t kPowersOfTen[kLongestDecimal] = {
    1u,
    10u,
    100u,
    1000u,
    10000u,
    100000u,
    1000000u,
    10000000u,
    100000000u,
    1000000000u,
    10000000000u,
    100000000000u,
    1000000000000u,
    10000000000000u,
    100000000000000u,
    1000000000000000u,
    10000000000000000u,
    100000000000000000u,
    1000000000000000000u,
    10000000000000000000u,
};

// Writes the digits of value at `at`, which has room for kLongestDecimal
// bytes, without a terminator; returns the end of the digits.
inline char *putDecimal(char *at, uint64_t value) noexcept
{
    if (value < 10) {
        *at = static_cast<char>('0' + value);
        return at + 1;
    }
    // A number of b bits has b * log10(2) digits, or one more: 1233 / 4096
    // is log10(2) closely enough for every width up to 64.
    size_t digits = static_cast<size_t>(std::bit_width(value)) * 1233 >> 12;
    digits += value >= kPowersOfTen[digits] ? 1 : 0;
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
