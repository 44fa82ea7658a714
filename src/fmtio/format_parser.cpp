// ParseFormatItem: one item of a format string at a time, as the Fmt and
// Scan engines walk it, and the first item's separator.
#include "fmtio/format_parser.h"

namespace tollan::fmtio {
namespace {

// The characters that '%' turns into literal text.
bool isEscapedCharacter(char c) noexcept
{
    return c == '%' || c == '<' || c == '>' || c == '[' || c == ']';
}

int32_t parseItem(ItemParse &parse) noexcept
{
    parse.letter = 0;
    parse.discard = false;
    parse.byteOrderGiven = false;
    const char *start = parse.cursor;
    if (start == parse.end) return FMT_PARSE_END;
    bool parsed = false;
    if (*start != '%') {
        parsed = parseLiteral(parse, start, false);
    } else if (start + 1 == parse.end) {
        parsed = parse.fail(FMT_ERR_UNEXPECTED_END, parse.end);
    } else if (isEscapedCharacter(start[1])) {
        parsed = parseLiteral(parse, start + 1, true);
    } else {
        parse.cursor = start + 1;
        parsed = parseSpecifier(parse);
    }
    return parsed ? FMT_PARSED_ITEM : FMT_PARSE_ERROR;
}

// The first item describes the target (Fmt) or the source (Scan) when the
// separator follows it. Without one the whole string lists the sources or
// targets and the first parameter is a string that the item leaves implied.
int32_t parseFirstItem(ItemParse &parse) noexcept
{
    const char *start = parse.cursor;
    const int32_t entriesBefore = parse.entryCount;
    if (start == parse.end) return parseImpliedString(parse, start) ? FMT_PARSE_END : FMT_PARSE_ERROR;
    if (*start == parse.separator()) {
        if (!parseImpliedString(parse, start)) return FMT_PARSE_ERROR;
        parse.cursor = start + 1;
        return FMT_PARSED_SEPARATOR;
    }
    if (parseItem(parse) == FMT_PARSE_ERROR) return FMT_PARSE_ERROR;
    if (parse.cursor < parse.end && *parse.cursor == parse.separator()) {
        moveFirstItemEntryToFront(parse);
        ++parse.cursor;
        return FMT_PARSED_FIRST_ITEM;
    }
    parse.cursor = start;
    parse.entryCount = entriesBefore;
    parse.isFirst = false;
    if (!parseImpliedString(parse, start)) return FMT_PARSE_ERROR;
    return parseItem(parse);
}

}  // namespace
}  // namespace tollan::fmtio

using namespace tollan::fmtio;

int32_t ParseFormatItem(const char **cursor, const char *end, ArgTypeEntry *table, int32_t *entryCount,
                        int32_t isScan, int32_t isFirst, FormatItem *item, int32_t *errorCode) noexcept
{
    if (cursor == nullptr || entryCount == nullptr || item == nullptr || *cursor > end || *entryCount < 0 ||
        *entryCount > TOLLAN_FMT_MAX_ARGS) {
        if (errorCode != nullptr) *errorCode = 0;
        return FMT_PARSE_ERROR;
    }
    ItemParse parse{};
    parse.cursor = *cursor;
    parse.end = end;
    parse.table = table;
    parse.entryCount = *entryCount;
    parse.isScan = isScan != 0;
    parse.isFirst = isFirst != 0;
    parse.item = item;
    const int32_t result = parse.isFirst ? parseFirstItem(parse) : parseItem(parse);
    *entryCount = parse.entryCount;
    if (result == FMT_PARSE_ERROR) {
        *cursor = parse.errorAt;
        if (errorCode != nullptr) *errorCode = parse.errorCode;
        return result;
    }
    *cursor = parse.cursor;
    if (errorCode != nullptr) *errorCode = 0;
    return result;
}
