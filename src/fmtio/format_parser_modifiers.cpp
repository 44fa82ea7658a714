// The bracketed modifiers of a specifier: a walk over the letters, each
// dispatched through its kind's table, and the modifiers every kind shares.
#include "fmtio/format_parser.h"

namespace tollan::fmtio {
namespace {

constexpr uint32_t kLargestJ = 256;

const ModifierTable &modifierTable(uint8_t kind) noexcept
{
    if (kind == FMT_ITEM_INTEGER) return kIntegerModifiers;
    if (kind == FMT_ITEM_REAL) return kRealModifiers;
    return kStringModifiers;
}

ModifierHandler findModifier(const ModifierTable &table, char letter) noexcept
{
    if (letter < 'a' || letter > 'z') return nullptr;
    return table.byLetter[letter - 'a'];
}

}  // namespace

bool failEndInBrackets(ItemParse &parse) noexcept
{
    const int32_t code =
        parse.item->kind == FMT_ITEM_STRING ? FMT_ERR_UNEXPECTED_END : FMT_ERR_MISSING_BRACKET;
    return parse.fail(code, parse.end);
}

bool parseModifiers(ItemParse &parse) noexcept
{
    const ModifierTable &table = modifierTable(parse.item->kind);
    ++parse.cursor;  // '['
    for (;;) {
        if (parse.cursor == parse.end) return failEndInBrackets(parse);
        const char *letter = parse.cursor;
        if (*letter == ']') break;
        const ModifierHandler handler = findModifier(table, *letter);
        if (handler == nullptr) return parse.fail(FMT_ERR_UNKNOWN_MODIFIER, letter);
        parse.item->position = letter;
        parse.cursor = letter + 1;
        if (!handler(parse)) return false;
    }
    ++parse.cursor;  // ']'
    return true;
}

bool modifierDiscard(ItemParse &parse) noexcept
{
    if (!parse.isScan) return parse.fail(FMT_ERR_DISCARD_IN_FMT, parse.item->position);
    parse.discard = true;
    return true;
}

bool modifierI(ItemParse &parse) noexcept
{
    return readNumberInto(parse, &parse.item->iMarker, &parse.item->iValue);
}

bool modifierJ(ItemParse &parse) noexcept
{
    int64_t value = 0;
    if (!readNumber(parse, Asterisk::refused, &value, &parse.item->jMarker)) return false;
    if (value > kLargestJ) return parse.fail(FMT_ERR_INTEGER_SIZE, parse.item->position);
    parse.item->jValue = static_cast<uint32_t>(value);
    return true;
}

bool modifierWidth(ItemParse &parse) noexcept
{
    if (parse.letter == 'l') return parse.fail(FMT_ERR_WIDTH_WITH_LINE, parse.item->position);
    return readNumberInto(parse, &parse.item->widthMarker, &parse.item->width);
}

bool modifierX(ItemParse &parse) noexcept
{
    parse.item->xFlag = 1;
    return true;
}

bool modifierZ(ItemParse &parse) noexcept
{
    if (parse.item->repetitionMarker == FMT_MARKER_DEFAULT)
        return parse.fail(FMT_ERR_Z_WITHOUT_REP, parse.item->position);
    parse.item->zFlag = 1;
    return true;
}

}  // namespace tollan::fmtio
