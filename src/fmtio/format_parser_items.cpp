// The two shapes of an item: literal text, and a specifier ('%', an optional
// repetition, a letter, optional modifiers), with each kind's defaults.
#include <cstring>

#include "fmtio/format_parser.h"

namespace tollan::fmtio {
namespace {

constexpr int64_t kUnlimited = INT64_MAX;
constexpr uint8_t kBlank = ' ';
constexpr uint8_t kByteOrderUnset = 255;
constexpr uint32_t kPrecisionNotGiven = 65535;
constexpr uint32_t kDefaultExponentDigits = 3;

// What a specifier letter makes of an item.
struct Specifier {
    uint8_t kind;
    int64_t size;
    uint32_t radix;  // integers
    uint8_t isSigned;
    uint8_t lineFlag;  // strings
};

// The letters of the language; false for any other character.
bool findSpecifier(char letter, Specifier *specifier) noexcept
{
    switch (letter) {
        case 'c':
            *specifier = {FMT_ITEM_INTEGER, 1, 256, 0, 0};
            return true;
        case 'd':
        case 'i':
            *specifier = {FMT_ITEM_INTEGER, 4, 10, 1, 0};
            return true;
        case 'o':
            *specifier = {FMT_ITEM_INTEGER, 4, 8, 0, 0};
            return true;
        case 'x':
            *specifier = {FMT_ITEM_INTEGER, 4, 16, 0, 0};
            return true;
        case 'f':
            *specifier = {FMT_ITEM_REAL, 8, 0, 0, 0};
            return true;
        case 's':
            *specifier = {FMT_ITEM_STRING, kUnlimited, 0, 0, 0};
            return true;
        case 'l':
            *specifier = {FMT_ITEM_STRING, kUnlimited, 0, 0, 1};
            return true;
        default:
            return false;
    }
}

void setCommonDefaults(FormatItem &item, uint8_t kind, const char *position, int64_t size) noexcept
{
    std::memset(&item, 0, sizeof item);
    item.kind = kind;
    item.position = position;
    item.size = size;
    item.width = kUnlimited;
    item.repetitionCount = 1;
    item.reservedLimit = kUnlimited;
}

void setSpecifierDefaults(FormatItem &item, const Specifier &specifier) noexcept
{
    switch (specifier.kind) {
        case FMT_ITEM_INTEGER:
            item.as.integer.radix = specifier.radix;
            item.as.integer.isSigned = specifier.isSigned;
            item.as.integer.padCharacter = kBlank;
            std::memset(item.as.integer.byteOrder, kByteOrderUnset, sizeof item.as.integer.byteOrder);
            break;
        case FMT_ITEM_REAL:
            item.as.real.precision = kPrecisionNotGiven;
            item.as.real.exponentDigits = kDefaultExponentDigits;
            break;
        default:
            item.as.string.qByte = kBlank;
            item.as.string.lineFlag = specifier.lineFlag;
            std::memset(item.as.string.characterSet, 0xFF, sizeof item.as.string.characterSet);
            break;
    }
}

// The optional repetition between '%' and the letter. White space right
// after '%' is no number (and then no letter either).
bool parseRepetition(ItemParse &parse) noexcept
{
    const char c = *parse.cursor;
    if (c != '*' && !isDigit(c)) return true;
    return readNumberInto(parse, &parse.item->repetitionMarker, &parse.item->repetitionCount);
}

// A source of Fmt arrives through the variable arguments, promoted: a
// character as an int and a float as a double.
void applyArgumentPromotion(ItemParse &parse) noexcept
{
    FormatItem &item = *parse.item;
    if (parse.isScan || parse.isFirst || item.repetitionMarker != FMT_MARKER_DEFAULT) return;
    if (parse.letter == 'c') item.size = sizeof(int32_t);
    if (item.kind == FMT_ITEM_REAL && item.size == sizeof(float)) item.size = sizeof(double);
}

bool appendOwnEntry(ItemParse &parse, const char *percent) noexcept
{
    FormatItem &item = *parse.item;
    if (parse.discard) return true;
    const bool isString = item.kind == FMT_ITEM_STRING;
    const uint16_t kind = isString || item.zFlag != 0 ? uint16_t{FMT_ITEM_STRING} : uint16_t{item.kind};
    const uint64_t elementSize = isString ? 1 : static_cast<uint64_t>(item.size);
    const int32_t index =
        appendEntry(parse, kind, item.repetitionMarker != FMT_MARKER_DEFAULT, elementSize, false, percent);
    if (index == 0) return false;
    item.parameterIndex = static_cast<uint8_t>(index);
    return true;
}

}  // namespace

bool parseLiteral(ItemParse &parse, const char *start, bool escaped) noexcept
{
    const char *c = escaped ? start + 1 : start;
    for (; c < parse.end && *c != '%'; ++c) {
        if (*c != '<' && *c != '>') continue;
        // The first item ends at the separator; anywhere else it is misplaced.
        if (parse.isFirst && *c == parse.separator()) break;
        return parse.fail(FMT_ERR_ILLEGAL_SEPARATOR, c);
    }
    setCommonDefaults(*parse.item, FMT_ITEM_LITERAL, start, c - start);
    parse.cursor = c;
    return true;
}

bool parseImpliedString(ItemParse &parse, const char *position) noexcept
{
    Specifier specifier{};
    findSpecifier('s', &specifier);
    setCommonDefaults(*parse.item, specifier.kind, position, specifier.size);
    setSpecifierDefaults(*parse.item, specifier);
    parse.letter = 's';
    return appendOwnEntry(parse, position);
}

bool parseSpecifier(ItemParse &parse) noexcept
{
    const char *percent = parse.cursor - 1;
    FormatItem &item = *parse.item;
    setCommonDefaults(item, FMT_ITEM_INTEGER, percent, 0);
    if (!parseRepetition(parse)) return false;
    if (parse.cursor == parse.end) return parse.fail(FMT_ERR_UNEXPECTED_END, parse.end);
    const char *letter = parse.cursor;
    Specifier specifier{};
    if (!findSpecifier(*letter, &specifier)) return parse.fail(FMT_ERR_UNKNOWN_SPECIFIER, letter);
    if (*letter == 'l' && !parse.isScan) return parse.fail(FMT_ERR_LINE_IN_FMT, letter);
    if (specifier.kind == FMT_ITEM_STRING && item.repetitionMarker != FMT_MARKER_DEFAULT)
        return parse.fail(FMT_ERR_REPEAT_WITH_STRING, letter);
    item.kind = specifier.kind;
    item.size = specifier.size;
    setSpecifierDefaults(item, specifier);
    parse.letter = *letter;
    parse.cursor = letter + 1;
    if (parse.cursor < parse.end && *parse.cursor == '[' && !parseModifiers(parse)) return false;
    applyArgumentPromotion(parse);
    return appendOwnEntry(parse, percent);
}

}  // namespace tollan::fmtio
