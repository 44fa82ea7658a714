// The modifiers of string items (s, and l in the Scan family).
#include "fmtio/format_parser.h"

namespace tollan::fmtio {
namespace {

constexpr uint8_t kLineWithCommas = 2;

void removeCharacter(FormatItem &item, uint8_t c) noexcept
{
    item.as.string.characterSet[c >> 3] &= static_cast<uint8_t>(~(1u << (c & 7)));
}

bool modifierAppend(ItemParse &parse) noexcept
{
    parse.item->as.string.aFlag = 1;
    return true;
}

bool modifierCommas(ItemParse &parse) noexcept
{
    if (parse.letter != 'l') return parse.fail(FMT_ERR_C_WITHOUT_LINE, parse.item->position);
    parse.item->as.string.lineFlag = kLineWithCommas;
    return true;
}

bool modifierQ(ItemParse &parse) noexcept
{
    parse.item->as.string.qByte = 0;
    return true;
}

// t#: a number's characters end the string; t-: the whole set (nothing does);
// tn: the character with code n (its low 8 bits) does.
bool modifierTerminator(ItemParse &parse) noexcept
{
    FormatItem &item = *parse.item;
    item.as.string.terminatorSet = 1;
    if (parse.cursor == parse.end) return failEndInBrackets(parse);
    if (*parse.cursor == '#') {
        for (char digit = '0'; digit <= '9'; ++digit) removeCharacter(item, static_cast<uint8_t>(digit));
        removeCharacter(item, '+');
        removeCharacter(item, '-');
        ++parse.cursor;
        return true;
    }
    if (*parse.cursor == '-') {
        ++parse.cursor;
        return true;
    }
    int64_t code = 0;
    int8_t marker = FMT_MARKER_DEFAULT;
    if (!readNumber(parse, Asterisk::refused, &code, &marker)) return false;
    removeCharacter(item, static_cast<uint8_t>(code & 0xFF));
    return true;
}

bool modifierY(ItemParse &parse) noexcept
{
    parse.item->as.string.yFlag = 1;
    return true;
}

}  // namespace

const ModifierTable kStringModifiers = {{
    modifierAppend,      // a
    nullptr,             // b
    modifierCommas,      // c
    modifierDiscard,     // d
    nullptr,             // e
    nullptr,             // f
    nullptr,             // g
    nullptr,             // h
    modifierI,           // i
    modifierJ,           // j
    nullptr,             // k
    nullptr,             // l
    nullptr,             // m
    nullptr,             // n
    nullptr,             // o
    nullptr,             // p
    modifierQ,           // q
    nullptr,             // r
    nullptr,             // s
    modifierTerminator,  // t
    nullptr,             // u
    nullptr,             // v
    modifierWidth,       // w
    modifierX,           // x
    modifierY,           // y
    nullptr,             // z
}};

}  // namespace tollan::fmtio
