// The argument table that a format string builds as it is parsed.
#include "fmtio/format_parser.h"

namespace tollan::fmtio {

int32_t appendEntry(ItemParse &parse, uint16_t kind, bool isArray, uint64_t elementSize, bool fromAsterisk,
                    const char *at) noexcept
{
    if (parse.entryCount >= TOLLAN_FMT_MAX_ARGS) {
        parse.fail(FMT_ERR_TOO_MANY_ARGUMENTS, at);
        return 0;
    }
    if (parse.table != nullptr) {
        ArgTypeEntry &entry = parse.table[parse.entryCount];
        entry.kind = kind;
        entry.isArray = isArray ? 1 : 0;
        entry.elementSize = elementSize;
        entry.fromAsterisk = fromAsterisk ? 1 : 0;
    }
    return ++parse.entryCount;
}

int32_t appendAsteriskEntry(ItemParse &parse, const char *at) noexcept
{
    return appendEntry(parse, FMT_ITEM_INTEGER, false, sizeof(int32_t), true, at);
}

namespace {

void raiseAsteriskMarker(int8_t &marker) noexcept
{
    if (marker > 0) ++marker;
}

}  // namespace

// The first item is the only one parsed with an empty table in front of it,
// so its own entry moves from its index down to 1.
void moveFirstItemEntryToFront(ItemParse &parse) noexcept
{
    FormatItem &item = *parse.item;
    const int32_t own = item.parameterIndex;
    if (own <= 1) return;
    if (parse.table != nullptr) {
        const ArgTypeEntry moved = parse.table[own - 1];
        for (int32_t index = own - 1; index > 0; --index) parse.table[index] = parse.table[index - 1];
        parse.table[0] = moved;
    }
    item.parameterIndex = 1;
    raiseAsteriskMarker(item.repetitionMarker);
    raiseAsteriskMarker(item.iMarker);
    raiseAsteriskMarker(item.widthMarker);
    if (item.kind == FMT_ITEM_INTEGER) raiseAsteriskMarker(item.as.integer.radixMarker);
    if (item.kind == FMT_ITEM_REAL) {
        raiseAsteriskMarker(item.as.real.precisionMarker);
        raiseAsteriskMarker(item.as.real.exponentDigitsMarker);
    }
}

}  // namespace tollan::fmtio
