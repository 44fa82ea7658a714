// The format language's rows of the library message table: every parser
// message, a sample of the others, and the numbers on either side.
#include <gtest/gtest.h>

#include <cstdint>

#include <tollan/fmtio.h>

#include "services/messages.h"

namespace {

using tollan::services::libraryMessage;

TEST(FormatMessages, TextsByNumber)
{
    const struct {
        int32_t number;
        const char *text;
    } rows[] = {
        {FMT_ERR_ILLEGAL_SEPARATOR,
         "Illegal separator character or illegal position of separator character."},
        {FMT_ERR_MISSING_INTEGER, "Missing format string integer."},
        {FMT_ERR_TOO_MANY_ARGUMENTS, "Number of arguments exceed the maximum supported."},
        {FMT_ERR_INTEGER_TOO_BIG, "Format string integer is too big."},
        {FMT_ERR_REPEAT_WITH_STRING, "Repeat value not valid with s/l format specifiers."},
        {FMT_ERR_LINE_IN_FMT, "l format specifier not valid in Fmt/FmtOut/FmtFile."},
        {FMT_ERR_MISSING_BRACKET, "Missing right bracket (])."},
        {FMT_ERR_B_AFTER_O, "b modifier must precede o modifier."},
        {FMT_ERR_INTEGER_SIZE, "Invalid size for an integer."},
        {FMT_ERR_DISCARD_IN_FMT, "d modifier not valid in Fmt/FmtOut/FmtFile."},
        {FMT_ERR_BYTE_ORDER, "Byte ordering is invalid."},
        {FMT_ERR_Z_WITHOUT_REP, "z modifier only valid if rep is present."},
        {FMT_ERR_UNKNOWN_MODIFIER, "Unknown modifier."},
        {FMT_ERR_UNEXPECTED_END, "Unexpected end of format string."},
        {FMT_ERR_C_WITHOUT_LINE, "c modifier valid only with l format specifier."},
        {FMT_ERR_WIDTH_WITH_LINE, "w modifier not valid with l format specifier."},
        {FMT_ERR_REAL_SIZE, "Invalid size for a real."},
        {FMT_ERR_UNKNOWN_SPECIFIER, "Unknown specifier."},
        {FMT_ERR_PRINTF_H_MODIFIER, "h modifier is only valid with d, i, n, o, u, and x specifiers."},
        {FMT_ERR_PRINTF_ZERO_FLAG, "0 flag is not valid with c, s, p, and n modifiers."},
        {FMT_ERR_TOO_MANY_PARAMETERS, "Too many parameters."},
        {FMT_ERR_NOT_ENOUGH_PARAMETERS, "Not enough parameters or invalid parameter type."},
        {FMT_ERR_ASTERISK_NOT_INTEGER, "Parameter matched to '*' must be an integer."},
        {FMT_ERR_INTEGER_ABSOLUTE_OVERFLOW,
         "Overflow occurred during the conversion of the int. The absolute value is too big for the size."},
        {FMT_ERR_ILLEGAL_ASTERISK_VALUE, "Illegal value matched to asterisk."},
        {FMT_ERR_AT_CHARACTER, "Error at or near character %d in the format string."},
        {FMT_ERR_AT_CHARACTER_WITH_TEXT, "Error at or near character %d in the format string: %s"},
        {FMT_ERR_PARAMETER_TYPE_MISMATCH, "Parameter type mismatch; expecting %s %s but found %s %s."},
        {205, "Unknown message number"},
        {260, "Unknown message number"},
    };
    for (const auto &row : rows) EXPECT_STREQ(libraryMessage(row.number), row.text) << row.number;
}

}  // namespace
