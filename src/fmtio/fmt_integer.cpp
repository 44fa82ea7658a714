#include "fmtio/fmt_integer.h"

namespace tollan::fmtio {

uint64_t widenInteger(uint64_t bits, int64_t size, bool isSigned) noexcept
{
    if (size >= 8) return bits;
    const int shift = static_cast<int>(64 - 8 * size);
    if (isSigned) return static_cast<uint64_t>(static_cast<int64_t>(bits << shift) >> shift);
    return (bits << shift) >> shift;
}

namespace {

void putBinary(ByteBuffer &out, const Conversion &conversion, uint64_t bits) noexcept
{
    char bytes[8];
    for (int k = 0; k < conversion.rawBytes; ++k)
        bytes[k] = static_cast<char>(bits >> (8 * byteNumberAt(*conversion.item, k)));
    out.append(bytes, static_cast<size_t>(conversion.rawBytes));
}

}  // namespace

int32_t formatInteger(ByteBuffer &out, const Conversion &conversion, uint64_t bits) noexcept
{
    if (conversion.binary) {
        putBinary(out, conversion, bits);
        return 0;
    }
    const FormatItem &item = *conversion.item;
    const bool isSigned = item.as.integer.isSigned != 0;
    const uint64_t value = widenInteger(bits, item.size, isSigned);
    const bool negative = isSigned && static_cast<int64_t>(value) < 0;
    uint64_t magnitude = negative ? 0 - value : value;

    const char *digitSet = item.xFlag ? "0123456789ABCDEF" : "0123456789abcdef";
    char digits[24];  // 22 octal digits are the most a 64-bit value needs
    char *first = digits + sizeof digits;
    do {
        *--first = digitSet[magnitude % conversion.radix];
        magnitude /= conversion.radix;
    } while (magnitude != 0);
    const int64_t digitCount = digits + sizeof digits - first;
    const int64_t length = digitCount + (negative ? 1 : 0);

    int64_t padding = 0;
    if (conversion.width != kUnlimited) {
        if (length > conversion.width) return FMT_ERR_WIDTH_EXCEEDED;
        padding = conversion.width - length;
    }
    // Zeros go between the sign and the digits, any other pad before the sign,
    // so that Scan can read the field back with the same item.
    const char pad = static_cast<char>(item.as.integer.padCharacter);
    if (pad != '0') out.fill(pad, static_cast<size_t>(padding));
    if (negative) out.append('-');
    if (pad == '0') out.fill(pad, static_cast<size_t>(padding));
    out.append(first, static_cast<size_t>(digitCount));
    return 0;
}

}  // namespace tollan::fmtio
