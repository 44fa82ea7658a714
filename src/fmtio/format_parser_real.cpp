// The modifiers of real items (f).
#include "fmtio/format_parser.h"

namespace tollan::fmtio {
namespace {

bool modifierSize(ItemParse &parse) noexcept
{
    FormatItem &item = *parse.item;
    int64_t size = 0;
    if (!readNumber(parse, Asterisk::refused, &size, &item.sizeMarker)) return false;
    if (size != sizeof(float) && size != sizeof(double)) return parse.fail(FMT_ERR_REAL_SIZE, item.position);
    item.size = size;
    return true;
}

// e alone, or with the number of exponent digits.
bool modifierExponential(ItemParse &parse) noexcept
{
    FormatItem &item = *parse.item;
    item.as.real.exponential = 1;
    if (parse.cursor == parse.end || (*parse.cursor != '*' && !isDigit(*parse.cursor))) return true;
    return readNumberInto(parse, &item.as.real.exponentDigitsMarker, &item.as.real.exponentDigits);
}

bool modifierFixed(ItemParse &parse) noexcept
{
    parse.item->as.real.exponential = 0;
    return true;
}

bool modifierPrecision(ItemParse &parse) noexcept
{
    auto &real = parse.item->as.real;
    return readNumberInto(parse, &real.precisionMarker, &real.precision);
}

bool modifierRtSet(ItemParse &parse) noexcept
{
    parse.item->as.real.rtFlag = 1;
    return true;
}

bool modifierRtClear(ItemParse &parse) noexcept
{
    parse.item->as.real.rtFlag = 0;
    return true;
}

}  // namespace

const ModifierTable kRealModifiers = {{
    nullptr,              // a
    modifierSize,         // b
    nullptr,              // c
    modifierDiscard,      // d
    modifierExponential,  // e
    modifierFixed,        // f
    nullptr,              // g
    nullptr,              // h
    modifierI,            // i
    modifierJ,            // j
    nullptr,              // k
    nullptr,              // l
    nullptr,              // m
    nullptr,              // n
    nullptr,              // o
    modifierPrecision,    // p
    nullptr,              // q
    modifierRtSet,        // r
    nullptr,              // s
    modifierRtClear,      // t
    nullptr,              // u
    nullptr,              // v
    modifierWidth,        // w
    modifierX,            // x
    nullptr,              // y
    modifierZ,            // z
}};

}  // namespace tollan::fmtio
