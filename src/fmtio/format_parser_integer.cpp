// The modifiers of integer items (c, d, i, o, x).
#include "fmtio/format_parser.h"

namespace tollan::fmtio {
namespace {

constexpr int64_t kLargestIntegerSize = 8;
// The byte numbers an o modifier may name.
constexpr int kLargestByteNumber = 3;

bool modifierSize(ItemParse &parse) noexcept
{
    FormatItem &item = *parse.item;
    // The byte order is checked against the size, so the size comes first.
    if (parse.byteOrderGiven) return parse.fail(FMT_ERR_B_AFTER_O, item.position);
    int64_t size = 0;
    if (!readNumber(parse, Asterisk::refused, &size, &item.sizeMarker)) return false;
    if (size > kLargestIntegerSize) return parse.fail(FMT_ERR_INTEGER_SIZE, item.position);
    item.size = size == 0 ? kLargestIntegerSize : size;
    return true;
}

// Digit k names the byte that goes to position k of the value.
bool modifierByteOrder(ItemParse &parse) noexcept
{
    FormatItem &item = *parse.item;
    if (parse.byteOrderGiven) return parse.fail(FMT_ERR_BYTE_ORDER, item.position);
    parse.byteOrderGiven = true;
    int64_t position = 0;
    for (; parse.cursor < parse.end && isDigit(*parse.cursor); ++parse.cursor, ++position) {
        const int byte = *parse.cursor - '0';
        if (position >= item.size || byte >= item.size || byte > kLargestByteNumber)
            return parse.fail(FMT_ERR_BYTE_ORDER, parse.cursor);
        item.as.integer.byteOrder[position] = static_cast<uint8_t>(byte);
    }
    return true;
}

// The pad character is the next character, whatever it is.
bool modifierPad(ItemParse &parse) noexcept
{
    if (parse.cursor == parse.end) return failEndInBrackets(parse);
    parse.item->as.integer.padCharacter = static_cast<uint8_t>(*parse.cursor);
    ++parse.cursor;
    return true;
}

bool modifierRadix(ItemParse &parse) noexcept
{
    auto &integer = parse.item->as.integer;
    return readNumberInto(parse, &integer.radixMarker, &integer.radix);
}

bool modifierSigned(ItemParse &parse) noexcept
{
    parse.item->as.integer.isSigned = 1;
    return true;
}

bool modifierUnsigned(ItemParse &parse) noexcept
{
    parse.item->as.integer.isSigned = 0;
    return true;
}

}  // namespace

const ModifierTable kIntegerModifiers = {{
    nullptr,            // a
    modifierSize,       // b
    nullptr,            // c
    modifierDiscard,    // d
    nullptr,            // e
    nullptr,            // f
    nullptr,            // g
    nullptr,            // h
    modifierI,          // i
    modifierJ,          // j
    nullptr,            // k
    nullptr,            // l
    nullptr,            // m
    nullptr,            // n
    modifierByteOrder,  // o
    modifierPad,        // p
    nullptr,            // q
    modifierRadix,      // r
    modifierSigned,     // s
    nullptr,            // t
    modifierUnsigned,   // u
    nullptr,            // v
    modifierWidth,      // w
    modifierX,          // x
    nullptr,            // y
    modifierZ,          // z
}};

}  // namespace tollan::fmtio
