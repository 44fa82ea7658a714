// Numbers inside the brackets of an item: '*' or decimal digits.
#include "fmtio/format_parser.h"

namespace tollan::fmtio {

bool readNumber(ItemParse &parse, Asterisk asterisk, int64_t *value, int8_t *marker) noexcept
{
    const char *start = parse.cursor;
    *marker = FMT_MARKER_ERROR;
    if (start == parse.end) return failEndInBrackets(parse);
    if (*start == '*') {
        if (asterisk == Asterisk::refused) return parse.fail(FMT_ERR_TOO_MANY_ARGUMENTS, start);
        const int32_t index = appendAsteriskEntry(parse, start);
        if (index == 0) return false;
        *marker = static_cast<int8_t>(index);
        parse.cursor = start + 1;
        return true;
    }
    // A white-space character is no number, however digits may follow it.
    if (!isDigit(*start)) return parse.fail(FMT_ERR_MISSING_INTEGER, start);
    int64_t number = 0;
    const char *digit = start;
    for (; digit < parse.end && isDigit(*digit); ++digit) {
        number = number * 10 + (*digit - '0');
        if (number > kLargestFormatNumber) return parse.fail(FMT_ERR_INTEGER_TOO_BIG, start);
    }
    if (digit == parse.end) return parse.fail(FMT_ERR_INTEGER_TOO_BIG, start);
    parse.cursor = digit;
    *value = number;
    *marker = FMT_MARKER_LITERAL;
    return true;
}

}  // namespace tollan::fmtio
