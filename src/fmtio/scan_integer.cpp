#include "fmtio/scan_integer.h"

namespace tollan::fmtio {
namespace {

int digitValue(char c) noexcept
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return 99;
}

int32_t scanBinary(ScanText &text, const Conversion &conversion, uint64_t *bits) noexcept
{
    if (text.end - text.at < conversion.rawBytes) return kSourceEnded;
    uint64_t value = 0;
    for (int k = 0; k < conversion.rawBytes; ++k)
        value |= uint64_t{static_cast<unsigned char>(text.at[k])} << (8 * byteNumberAt(*conversion.item, k));
    text.at += conversion.rawBytes;
    *bits = value;
    return 0;
}

// Checks magnitude (with its sign) against the element's size.
int32_t checkRange(uint64_t magnitude, bool negative, const FormatItem &item) noexcept
{
    const int bitsInSize = static_cast<int>(8 * (item.size > 8 ? 8 : item.size));
    if (!item.as.integer.isSigned) {
        const uint64_t largest = bitsInSize == 64 ? UINT64_MAX : (uint64_t{1} << bitsInSize) - 1;
        return magnitude > largest ? FMT_ERR_INTEGER_ABSOLUTE_OVERFLOW : 0;
    }
    const uint64_t largest = (uint64_t{1} << (bitsInSize - 1)) - 1;
    return magnitude > largest + (negative ? 1 : 0) ? FMT_ERR_INTEGER_SIGNED_OVERFLOW : 0;
}

}  // namespace

int32_t scanInteger(ScanText &text, const Conversion &conversion, uint64_t *bits) noexcept
{
    if (conversion.binary) return scanBinary(text, conversion, bits);
    const FormatItem &item = *conversion.item;
    const int radix = static_cast<int>(conversion.radix);
    const char pad = static_cast<char>(item.as.integer.padCharacter);
    // A pad that is a digit or a sign is part of the number, not before it.
    const bool skipPad = digitValue(pad) >= radix && pad != '-' && pad != '+';
    const bool limited = conversion.width != kUnlimited;

    const char *at = text.at;
    const char *end = fieldEnd(text, conversion.width);
    while (at < end && (isScanSpace(*at) || (skipPad && *at == pad))) ++at;
    if (at == text.end) return kSourceEnded;
    const bool negative = at < end && *at == '-';
    if (at < end && (*at == '-' || *at == '+')) ++at;

    uint64_t magnitude = 0;
    bool tooBig = false;
    const char *digits = at;
    for (int digit; at < end && (digit = digitValue(*at)) < radix; ++at) {
        tooBig |= __builtin_mul_overflow(magnitude, static_cast<uint64_t>(radix), &magnitude);
        tooBig |= __builtin_add_overflow(magnitude, static_cast<uint64_t>(digit), &magnitude);
    }
    if (at == digits) return limited && at == end ? FMT_ERR_WIDTH_TOO_SMALL : FMT_ERR_NO_INTEGER;
    if (negative && !item.as.integer.isSigned) return FMT_ERR_NO_INTEGER;
    if (tooBig)
        return item.as.integer.isSigned ? FMT_ERR_INTEGER_SIGNED_OVERFLOW : FMT_ERR_INTEGER_ABSOLUTE_OVERFLOW;
    if (const int32_t error = checkRange(magnitude, negative, item)) return error;

    text.at = at;
    *bits = negative ? 0 - magnitude : magnitude;
    return 0;
}

}  // namespace tollan::fmtio
