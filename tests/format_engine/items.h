// Items as the parser fills them, for testing the converters on their own:
// the defaults of each kind, changed by the test where it needs.
#pragma once

#include <cstring>

#include <tollan/fmtio.h>

#include "fmtio/fmt_conversion.h"

namespace tollan::fmtio::testing {

inline FormatItem baseItem(uint8_t kind, int64_t size)
{
    FormatItem item{};
    item.kind = kind;
    item.size = size;
    item.width = kUnlimited;
    item.repetitionCount = 1;
    item.reservedLimit = kUnlimited;
    return item;
}

// %d, %o, %x (radix 8, 16) or %c (radix 256, size 1).
inline FormatItem integerItem(uint32_t radix = 10, int64_t size = 4, bool isSigned = true)
{
    FormatItem item = baseItem(FMT_ITEM_INTEGER, size);
    item.as.integer.radix = radix;
    item.as.integer.isSigned = isSigned;
    item.as.integer.padCharacter = ' ';
    std::memset(item.as.integer.byteOrder, 255, sizeof item.as.integer.byteOrder);
    if (size != 4 && radix != 256) item.sizeMarker = FMT_MARKER_LITERAL;
    return item;
}

inline FormatItem realItem(int64_t size = 8)
{
    FormatItem item = baseItem(FMT_ITEM_REAL, size);
    item.as.real.precision = kNoPrecision;
    item.as.real.exponentDigits = 3;
    return item;
}

inline FormatItem stringItem(uint8_t lineFlag = 0)
{
    FormatItem item = baseItem(FMT_ITEM_STRING, kUnlimited);
    item.as.string.qByte = ' ';
    item.as.string.lineFlag = lineFlag;
    std::memset(item.as.string.characterSet, 0xFF, sizeof item.as.string.characterSet);
    return item;
}

inline void setWidth(FormatItem &item, int64_t width)
{
    item.width = width;
    item.widthMarker = FMT_MARKER_LITERAL;
}

inline void setPrecision(FormatItem &item, uint32_t precision)
{
    item.as.real.precision = precision;
    item.as.real.precisionMarker = FMT_MARKER_LITERAL;
}

inline void setRepetition(FormatItem &item, uint32_t count)
{
    item.repetitionCount = count;
    item.repetitionMarker = FMT_MARKER_LITERAL;
}

// Byte order digits as the o modifier gives them ("3210": big-endian).
inline void setByteOrder(FormatItem &item, const char *digits)
{
    for (int k = 0; digits[k]; ++k) item.as.integer.byteOrder[k] = static_cast<uint8_t>(digits[k] - '0');
}

inline Conversion resolved(const FormatItem &item, Role role, bool splitsAtComma = false)
{
    Conversion conversion{};
    static const ArgumentValue none[TOLLAN_FMT_MAX_ARGS + 2] = {};
    resolveConversion(item, none, role, splitsAtComma, &conversion);
    return conversion;
}

}  // namespace tollan::fmtio::testing
