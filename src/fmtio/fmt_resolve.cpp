// Resolution of an item before conversion: '*' values, limits and the
// terminator set of strings.
#include <cstring>
#include <initializer_list>

#include "fmtio/fmt_conversion.h"

namespace tollan::fmtio {
namespace {

// The value of a number whose marker is not the default: the digits in the
// format string, or the '*' argument it names.
int64_t numberOf(int8_t marker, int64_t literal, const ArgumentValue *values) noexcept
{
    return marker > 0 ? values[marker].integer : literal;
}

void clearCharacter(uint8_t *set, unsigned char c) noexcept
{
    set[c >> 3] = static_cast<uint8_t>(set[c >> 3] & ~(1u << (c & 7)));
}

// The number of byte positions the o modifier names.
int namedPositions(const FormatItem &item) noexcept
{
    int count = 0;
    for (uint8_t named : item.as.integer.byteOrder)
        if (named != 255) ++count;
    return count;
}

// The characters that end a string item in its role.
void settleCharacterSet(const FormatItem &item, Role role, bool sourceSplitsAtComma, uint8_t *set) noexcept
{
    std::memcpy(set, item.as.string.characterSet, 32);
    if (item.as.string.lineFlag != 0) {
        for (unsigned char c : {'\0', '\n', '\r'}) clearCharacter(set, c);
        return;
    }
    if (role == Role::fmtTarget) {
        std::memset(set, 0xFF, 32);
        return;
    }
    if (item.as.string.terminatorSet) return;
    std::memset(set, 0xFF, 32);
    clearCharacter(set, '\0');
    if (role != Role::scanTarget) return;
    if (sourceSplitsAtComma) {
        clearCharacter(set, ',');
        return;
    }
    for (unsigned char c : {'\t', '\n', '\v', '\f', '\r', ' '}) clearCharacter(set, c);
}

int32_t resolveInteger(const FormatItem &item, const ArgumentValue *values, Role role,
                       Conversion *conversion) noexcept
{
    const auto &integer = item.as.integer;
    const int64_t radix = integer.radixMarker == FMT_MARKER_DEFAULT
                              ? integer.radix
                              : numberOf(integer.radixMarker, integer.radix, values);
    if (radix != 8 && radix != 10 && radix != 16 && radix != 256) return FMT_ERR_ILLEGAL_ASTERISK_VALUE;
    conversion->radix = static_cast<uint32_t>(radix);
    const int named = namedPositions(item);
    conversion->binary = radix == 256 || named != 0;
    conversion->rawBytes = static_cast<int>(item.size);
    // A c item is one character, whatever size its argument arrives in; a c
    // that Fmt takes by value always arrives as an int, so there its o
    // modifier alone tells how many bytes it stands for.
    const bool isCharacter = radix == 256 && integer.radixMarker == FMT_MARKER_DEFAULT;
    const bool byValue =
        role == Role::fmtSource && item.repetitionMarker == FMT_MARKER_DEFAULT && !item.zFlag;
    if (isCharacter && byValue) conversion->rawBytes = named != 0 ? named : 1;
    if (isCharacter && item.sizeMarker == FMT_MARKER_DEFAULT && named == 0) conversion->rawBytes = 1;
    return 0;
}

int32_t resolveReal(const FormatItem &item, const ArgumentValue *values, Conversion *conversion) noexcept
{
    const auto &real = item.as.real;
    if (real.precisionMarker != FMT_MARKER_DEFAULT) {
        const int64_t precision = numberOf(real.precisionMarker, real.precision, values);
        if (precision < 0) return FMT_ERR_ILLEGAL_ASTERISK_VALUE;
        conversion->precision =
            static_cast<uint32_t>(precision > kLargestPrecision ? kLargestPrecision : precision);
    }
    const int64_t digits = numberOf(real.exponentDigitsMarker, real.exponentDigits, values);
    if (digits < 0) return FMT_ERR_ILLEGAL_ASTERISK_VALUE;
    conversion->exponentDigits =
        static_cast<uint32_t>(digits > kLargestExponentDigits ? kLargestExponentDigits : digits);
    return 0;
}

}  // namespace

int32_t resolveConversion(const FormatItem &item, const ArgumentValue *values, Role role,
                          bool sourceSplitsAtComma, Conversion *conversion) noexcept
{
    // Every field but the character set is set here; the set only for strings.
    conversion->item = &item;
    conversion->radix = 0;
    conversion->precision = kNoPrecision;
    conversion->exponentDigits = 0;
    conversion->separator = nullptr;
    conversion->separatorLength = 0;
    conversion->binary = false;
    conversion->rawBytes = 0;

    const int64_t width = numberOf(item.widthMarker, item.width, values);
    if (width < 0) return FMT_ERR_NEGATIVE_WIDTH;
    conversion->width = width == 0 || item.widthMarker == FMT_MARKER_DEFAULT ? kUnlimited : width;
    const bool numeric = item.kind == FMT_ITEM_INTEGER || item.kind == FMT_ITEM_REAL;
    const bool limitedRole = role == Role::fmtSource || role == Role::scanSource;
    if (numeric && limitedRole && conversion->width != kUnlimited && conversion->width > kLargestFieldWidth)
        return FMT_ERR_WIDTH_EXCEEDED;

    conversion->isArray = item.repetitionMarker != FMT_MARKER_DEFAULT;
    const int64_t count =
        conversion->isArray ? numberOf(item.repetitionMarker, item.repetitionCount, values) : 1;
    const int64_t offset = numberOf(item.iMarker, item.iValue, values);
    if (count < 0 || count > UINT32_MAX || offset < 0) return FMT_ERR_ILLEGAL_ASTERISK_VALUE;
    conversion->count = static_cast<uint32_t>(count);
    conversion->offset = offset;

    switch (item.kind) {
        case FMT_ITEM_INTEGER:
            return resolveInteger(item, values, role, conversion);
        case FMT_ITEM_REAL:
            return resolveReal(item, values, conversion);
        case FMT_ITEM_STRING:
            if (item.as.string.aFlag && limitedRole) return FMT_ERR_INCOMPATIBLE_PARAMETER;
            settleCharacterSet(item, role, sourceSplitsAtComma, conversion->characterSet);
            return 0;
        default:
            // Literal text before the separator describes no target or
            // source.
            return FMT_ERR_INCOMPATIBLE_PARAMETER;
    }
}

}  // namespace tollan::fmtio
