// One item of a Fmt or Scan call made ready for conversion: the numbers its
// '*'s name are fetched from the call's arguments, and the resolution rules
// (unlimited width 0, the width limit of 511, the radices, the precision and
// exponent caps, the settled terminator set) are applied once here so that
// the converters only convert.
#pragma once

#include <cstddef>
#include <cstdint>

#include <tollan/fmtio.h>

namespace tollan::fmtio {

inline constexpr int64_t kUnlimited = INT64_MAX;
inline constexpr uint32_t kNoPrecision = 65535;
inline constexpr int64_t kLargestFieldWidth = 511;
inline constexpr uint32_t kLargestPrecision = 200;
inline constexpr uint32_t kLargestExponentDigits = 10;

// A value fetched from the variable arguments, by the kind its table entry
// names.
struct ArgumentValue {
    int64_t integer;
    double real;
    const void *pointer;
};

// Where an item stands in its call.
enum class Role : uint8_t { fmtTarget, fmtSource, scanSource, scanTarget };

struct Conversion {
    const FormatItem *item;
    int64_t width;            // kUnlimited when none
    uint32_t radix;           // integers
    uint32_t precision;       // reals; kNoPrecision when none
    uint32_t exponentDigits;  // reals
    uint32_t count;           // elements; 1 for a scalar
    bool isArray;
    int64_t offset;         // the i value
    const char *separator;  // the item's j characters; null: none were given
    size_t separatorLength;
    bool binary;               // an integer kept as raw bytes
    int rawBytes;              // how many, when binary
    uint8_t characterSet[32];  // strings: the settled set, bit set = may be part
};

inline bool inCharacterSet(const Conversion &conversion, unsigned char c) noexcept
{
    return (conversion.characterSet[c >> 3] >> (c & 7)) & 1;
}

// How far a string item's i offset moves from start: by offset bytes, but
// not past the NUL that ends the text (unless a width and the set make NUL a
// byte of the string).
inline int64_t offsetWithin(const Conversion &conversion, const char *start) noexcept
{
    if (conversion.width != kUnlimited && inCharacterSet(conversion, '\0')) return conversion.offset;
    int64_t moved = 0;
    while (moved < conversion.offset && start[moved] != '\0') ++moved;
    return moved;
}

// The byte number (0 the least significant) that goes to position k of a
// binary integer: the o modifier's digit, or k itself where none was given.
inline int byteNumberAt(const FormatItem &item, int k) noexcept
{
    const uint8_t named = k < 8 ? item.as.integer.byteOrder[k] : 255;
    return named == 255 ? k : named;
}

// Fills *conversion for item in its role. values[k] is the k-th argument of
// the table (1-based). separator/separatorLength: the j characters after the
// item in the format string. sourceSplitsAtComma: a Scan whose source is an
// l item with the c modifier. Returns 0, or the message number that refuses
// the item (249 a width above 511, 250 a negative width, 256 a bad radix or a
// negative count, precision, offset or exponent, 234 an a flag where none may
// be, or literal text as the first item).
int32_t resolveConversion(const FormatItem &item, const ArgumentValue *values, Role role,
                          bool sourceSplitsAtComma, Conversion *conversion) noexcept;

}  // namespace tollan::fmtio
