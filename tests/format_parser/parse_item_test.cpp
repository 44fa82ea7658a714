// ParseFormatItem as the engines call it: its results, the cursor it leaves,
// the items it fills, and the limits of the argument table.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <tollan/fmtio.h>

#include "fixtures/log_capture.h"
#include "format_parser/format_table.h"

namespace {

using tollan::testing::describeTable;
using tollan::testing::kFmt;
using tollan::testing::kScan;
using tollan::testing::LogCapture;

// A walk over one format string, one call per item.
class ItemWalk {
public:
    ItemWalk(const std::string &format, int32_t family)
        : format_(format), cursor_(format_.data()), family_(family)
    {
    }

    int32_t next()
    {
        const bool first = cursor_ == format_.data() && calls_ == 0;
        ++calls_;
        std::memset(&item_, 0xA5, sizeof item_);  // every field must be written
        return ParseFormatItem(&cursor_, format_.data() + format_.size(), table_, &count_, family_, first,
                               &item_, &error_);
    }
    size_t offset() const { return static_cast<size_t>(cursor_ - format_.data()); }
    const FormatItem &item() const { return item_; }
    int32_t error() const { return error_; }
    std::string table() const { return describeTable(table_, count_); }
    int32_t count() const { return count_; }

private:
    std::string format_;
    const char *cursor_;
    int32_t family_;
    int calls_ = 0;
    ArgTypeEntry table_[TOLLAN_FMT_MAX_ARGS] = {};
    int32_t count_ = 0;
    FormatItem item_{};
    int32_t error_ = -1;
};

TEST(FormatParseItem, FirstCallResults)
{
    const struct {
        const char *format;
        int32_t family;
        int32_t result;
        size_t offset;
        const char *table;
    } rows[] = {
        {"%d<%s", kFmt, FMT_PARSED_FIRST_ITEM, 3, "i4"},
        {"%s[w5]>%d", kScan, FMT_PARSED_FIRST_ITEM, 7, "s1"},
        {"<%s", kFmt, FMT_PARSED_SEPARATOR, 1, "s1"},
        {">", kScan, FMT_PARSED_SEPARATOR, 1, "s1"},
        {"%d%f", kFmt, FMT_PARSED_ITEM, 2, "s1 i4"},
        {"text", kFmt, FMT_PARSED_ITEM, 4, "s1"},
        {"", kFmt, FMT_PARSE_END, 0, "s1"},
        {"%q", kFmt, FMT_PARSE_ERROR, 1, ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.format);
        ItemWalk walk(row.format, row.family);
        EXPECT_EQ(walk.next(), row.result);
        EXPECT_EQ(walk.offset(), row.offset);
        EXPECT_EQ(walk.table(), row.table);
        EXPECT_EQ(walk.error(), row.result == FMT_PARSE_ERROR ? FMT_ERR_UNKNOWN_SPECIFIER : 0);
    }
}

TEST(FormatParseItem, WalksItemByItemToTheEnd)
{
    ItemWalk walk("%s<ab%d[w3]%%%f", kFmt);
    ASSERT_EQ(walk.next(), FMT_PARSED_FIRST_ITEM);
    EXPECT_EQ(walk.item().parameterIndex, 1);
    ASSERT_EQ(walk.next(), FMT_PARSED_ITEM);
    EXPECT_EQ(walk.item().kind, FMT_ITEM_LITERAL);
    EXPECT_EQ(walk.item().size, 2);
    EXPECT_EQ(walk.item().parameterIndex, 0);
    ASSERT_EQ(walk.next(), FMT_PARSED_ITEM);
    EXPECT_EQ(walk.item().width, 3);
    EXPECT_EQ(walk.item().widthMarker, FMT_MARKER_LITERAL);
    EXPECT_EQ(walk.item().parameterIndex, 2);
    ASSERT_EQ(walk.next(), FMT_PARSED_ITEM);  // "%" escaped
    EXPECT_EQ(walk.item().kind, FMT_ITEM_LITERAL);
    EXPECT_EQ(walk.item().size, 1);
    EXPECT_EQ(*walk.item().position, '%');
    ASSERT_EQ(walk.next(), FMT_PARSED_ITEM);
    EXPECT_EQ(walk.item().kind, FMT_ITEM_REAL);
    EXPECT_EQ(walk.next(), FMT_PARSE_END);
    EXPECT_EQ(walk.next(), FMT_PARSE_END);
    EXPECT_EQ(walk.table(), "s1 i4 f8");
}

TEST(FormatParseItem, FieldDefaultsOfEachKind)
{
    ItemWalk walk("%s<%d%o%x%c%f%s", kFmt);
    ASSERT_EQ(walk.next(), FMT_PARSED_FIRST_ITEM);
    const FormatItem &item = walk.item();
    // The common part, on the string item the walk starts with.
    EXPECT_EQ(item.kind, FMT_ITEM_STRING);
    EXPECT_EQ(item.sizeMarker, 0);
    EXPECT_EQ(item.iMarker, 0);
    EXPECT_EQ(item.jMarker, 0);
    EXPECT_EQ(item.widthMarker, 0);
    EXPECT_EQ(item.repetitionMarker, 0);
    EXPECT_EQ(item.jValue, 0u);
    EXPECT_EQ(item.size, INT64_MAX);
    EXPECT_EQ(item.iValue, 0u);
    EXPECT_EQ(item.width, INT64_MAX);
    EXPECT_EQ(item.repetitionCount, 1u);
    EXPECT_EQ(item.reservedCount, 0);
    EXPECT_EQ(item.reservedLimit, INT64_MAX);
    EXPECT_EQ(item.xFlag, 0);
    EXPECT_EQ(item.zFlag, 0);
    EXPECT_EQ(item.as.string.qByte, ' ');
    EXPECT_EQ(item.as.string.lineFlag, 0);
    EXPECT_EQ(item.as.string.aFlag, 0);
    EXPECT_EQ(item.as.string.terminatorSet, 0);
    EXPECT_EQ(item.as.string.yFlag, 0);
    for (uint8_t bits : item.as.string.characterSet) EXPECT_EQ(bits, 0xFF);

    const struct {
        uint32_t radix;
        uint8_t isSigned;
        int64_t size;
    } integers[] = {{10, 1, 4}, {8, 0, 4}, {16, 0, 4}, {256, 0, 4}};  // d o x, and c promoted
    for (const auto &expected : integers) {
        ASSERT_EQ(walk.next(), FMT_PARSED_ITEM);
        EXPECT_EQ(item.kind, FMT_ITEM_INTEGER);
        EXPECT_EQ(item.size, expected.size);
        EXPECT_EQ(item.as.integer.radix, expected.radix);
        EXPECT_EQ(item.as.integer.radixMarker, 0);
        EXPECT_EQ(item.as.integer.isSigned, expected.isSigned);
        EXPECT_EQ(item.as.integer.padCharacter, ' ');
        for (uint8_t byte : item.as.integer.byteOrder) EXPECT_EQ(byte, 255);
    }
    ASSERT_EQ(walk.next(), FMT_PARSED_ITEM);
    EXPECT_EQ(item.kind, FMT_ITEM_REAL);
    EXPECT_EQ(item.size, 8);
    EXPECT_EQ(item.as.real.precision, 65535u);
    EXPECT_EQ(item.as.real.precisionMarker, 0);
    EXPECT_EQ(item.as.real.rtFlag, 0);
    EXPECT_EQ(item.as.real.exponential, 0);
    EXPECT_EQ(item.as.real.exponentDigitsMarker, 0);
    EXPECT_EQ(item.as.real.exponentDigits, 3u);
    ASSERT_EQ(walk.next(), FMT_PARSED_ITEM);
    EXPECT_EQ(item.parameterIndex, 7);
}

TEST(FormatParseItem, ModifiersSetTheirFields)
{
    ItemWalk walk("%s>%x[b2o10p0r16uw5xi3j4]%f[e2p3rw10]%l[cqayt#t65]%c", kScan);
    ASSERT_EQ(walk.next(), FMT_PARSED_FIRST_ITEM);
    const FormatItem &item = walk.item();
    ASSERT_EQ(walk.next(), FMT_PARSED_ITEM);
    EXPECT_EQ(item.size, 2);
    EXPECT_EQ(item.sizeMarker, FMT_MARKER_LITERAL);
    EXPECT_EQ(item.as.integer.byteOrder[0], 1);
    EXPECT_EQ(item.as.integer.byteOrder[1], 0);
    EXPECT_EQ(item.as.integer.byteOrder[2], 255);
    EXPECT_EQ(item.as.integer.padCharacter, '0');
    EXPECT_EQ(item.as.integer.radix, 16u);
    EXPECT_EQ(item.as.integer.radixMarker, FMT_MARKER_LITERAL);
    EXPECT_EQ(item.as.integer.isSigned, 0);
    EXPECT_EQ(item.width, 5);
    EXPECT_EQ(item.xFlag, 1);
    EXPECT_EQ(item.iValue, 3u);
    EXPECT_EQ(item.jValue, 4u);
    EXPECT_EQ(item.jMarker, FMT_MARKER_LITERAL);
    EXPECT_EQ(*item.position, 'j');  // the last modifier
    ASSERT_EQ(walk.next(), FMT_PARSED_ITEM);
    EXPECT_EQ(item.as.real.exponential, 1);
    EXPECT_EQ(item.as.real.exponentDigits, 2u);
    EXPECT_EQ(item.as.real.exponentDigitsMarker, FMT_MARKER_LITERAL);
    EXPECT_EQ(item.as.real.precision, 3u);
    EXPECT_EQ(item.as.real.rtFlag, 1);
    EXPECT_EQ(item.width, 10);
    ASSERT_EQ(walk.next(), FMT_PARSED_ITEM);
    EXPECT_EQ(item.as.string.lineFlag, 2);
    EXPECT_EQ(item.as.string.qByte, 0);
    EXPECT_EQ(item.as.string.aFlag, 1);
    EXPECT_EQ(item.as.string.yFlag, 1);
    EXPECT_EQ(item.as.string.terminatorSet, 1);
    const auto inSet = [&item](unsigned char c) {
        return (item.as.string.characterSet[c >> 3] >> (c & 7)) & 1;
    };
    for (unsigned char c : std::string("0123456789+-A")) EXPECT_EQ(inSet(c), 0) << c;
    for (unsigned char c : std::string("aB ,.\n")) EXPECT_EQ(inSet(c), 1) << c;
    ASSERT_EQ(walk.next(), FMT_PARSED_ITEM);
    EXPECT_EQ(item.size, 1);  // a Scan target character is one byte
}

// The first item's own parameter is the first argument; the '*' numbers it
// consumed follow it, and the indices it recorded for them follow too.
TEST(FormatParseItem, FirstItemAsterisksMoveBehindItsOwnEntry)
{
    ItemWalk first("%*d[w*i*r*]<%f[p*e*]", kFmt);
    ASSERT_EQ(first.next(), FMT_PARSED_FIRST_ITEM);
    EXPECT_EQ(first.item().parameterIndex, 1);
    EXPECT_EQ(first.item().repetitionMarker, 2);
    EXPECT_EQ(first.item().widthMarker, 3);
    EXPECT_EQ(first.item().iMarker, 4);
    EXPECT_EQ(first.item().as.integer.radixMarker, 5);
    ASSERT_EQ(first.next(), FMT_PARSED_ITEM);
    EXPECT_EQ(first.item().as.real.precisionMarker, 6);
    EXPECT_EQ(first.item().as.real.exponentDigitsMarker, 7);
    EXPECT_EQ(first.item().parameterIndex, 8);
    EXPECT_EQ(first.table(), "ia4 i4* i4* i4* i4* i4* i4* f8");

    ItemWalk real("%f[p*e*]>%d", kScan);
    ASSERT_EQ(real.next(), FMT_PARSED_FIRST_ITEM);
    EXPECT_EQ(real.item().as.real.precisionMarker, 2);
    EXPECT_EQ(real.item().as.real.exponentDigitsMarker, 3);
    EXPECT_EQ(real.table(), "f8 i4* i4*");

    // Without the separator the item is a source, and nothing moves.
    ItemWalk source("%*d[w*]", kFmt);
    ASSERT_EQ(source.next(), FMT_PARSED_ITEM);
    EXPECT_EQ(source.item().repetitionMarker, 2);
    EXPECT_EQ(source.item().widthMarker, 3);
    EXPECT_EQ(source.item().parameterIndex, 4);
    EXPECT_EQ(source.table(), "s1 i4* i4* ia4");
}

std::string repeat(const char *piece, int times)
{
    std::string text;
    for (int i = 0; i < times; ++i) text += piece;
    return text;
}

TEST(FormatParseItem, ThirtyArgumentsAndNoMore)
{
    int32_t error = 0;
    ArgTypeEntry table[TOLLAN_FMT_MAX_ARGS];
    const std::string thirty = "%s<" + repeat("%d", 29);
    EXPECT_EQ(generate_arg_types(thirty.data(), thirty.size(), table, kFmt, &error), 30);
    const std::string thirtyOne = thirty + "%d";
    EXPECT_EQ(generate_arg_types(thirtyOne.data(), thirtyOne.size(), table, kFmt, &error),
              -static_cast<int32_t>(thirty.size()));
    EXPECT_EQ(error, FMT_ERR_TOO_MANY_ARGUMENTS);
    // A '*' past the thirtieth fails at the '*' itself.
    const std::string asterisk = "%s<" + repeat("%d", 29) + "%d[w*]";
    EXPECT_EQ(generate_arg_types(asterisk.data(), asterisk.size(), nullptr, kFmt, &error),
              -static_cast<int32_t>(asterisk.size() - 2));
    EXPECT_EQ(error, FMT_ERR_TOO_MANY_ARGUMENTS);
    // Discarded items and literals take no argument.
    const std::string discarded = "%s>" + repeat("%d[d] %s[d]", 40) + repeat("%d", 29);
    EXPECT_EQ(generate_arg_types(discarded.data(), discarded.size(), nullptr, kScan, &error), 30);
}

TEST(FormatParseItem, OneMebibyteFormat)
{
    std::string format = "%s<" + std::string(1 << 20, 'x') + "%d";
    int32_t error = -1;
    ArgTypeEntry table[TOLLAN_FMT_MAX_ARGS];
    EXPECT_EQ(generate_arg_types(format.data(), format.size(), table, kFmt, &error), 2);
    EXPECT_EQ(error, 0);
    format += "%q";
    EXPECT_EQ(generate_arg_types(format.data(), format.size(), table, kFmt, &error),
              -static_cast<int32_t>(format.size() - 1));
    EXPECT_EQ(error, FMT_ERR_UNKNOWN_SPECIFIER);
}

// Cut a format at every position inside brackets: the end of the string is
// reported where it is, as 212 (integers, reals) or 219 (strings), except
// inside digits, which are reported at their start as 209.
TEST(FormatParseItem, UnterminatedBracketsAtEveryPosition)
{
    const std::string whole = "%s[aqt#t65w12]>%d[b2o10p]w*i34]%f[e3p*rw7]%l[c]%s[t-]";
    int cuts = 0;
    for (size_t length = 0; length < whole.size(); ++length) {
        // Inside brackets: after a '[' with no ']' closing it before the cut
        // (the pad character ']' of p] closes nothing).
        const size_t open = whole.rfind('[', length - 1);
        if (length == 0 || open == std::string::npos) continue;
        size_t close = whole.find(']', open);
        if (whole.compare(open, 4, "[b2o") == 0) close = whole.find(']', whole.find("p]") + 2);
        if (close < length) continue;
        SCOPED_TRACE(whole.substr(0, length));
        ++cuts;
        size_t digits = length;
        while (digits > open && std::isdigit(static_cast<unsigned char>(whole[digits - 1]))) --digits;
        const bool inNumber =
            digits < length && std::string("bwjite").find(whole[digits - 1]) != std::string::npos;
        const bool isString = whole[open - 1] == 's' || whole[open - 1] == 'l';
        int32_t error = 0;
        const int32_t result = generate_arg_types(whole.data(), length, nullptr, kScan, &error);
        if (inNumber) {
            EXPECT_EQ(error, FMT_ERR_INTEGER_TOO_BIG);
            EXPECT_EQ(result, -static_cast<int32_t>(digits));
        } else {
            EXPECT_EQ(error, isString ? FMT_ERR_UNEXPECTED_END : FMT_ERR_MISSING_BRACKET);
            EXPECT_EQ(result, -static_cast<int32_t>(length));
        }
    }
    EXPECT_GT(cuts, 30);
}

TEST(FormatParseItem, RangeThatWrapsIsAnAssertion)
{
    LogCapture capture(0, "[LEVEL]|[FILE]:[LINE]|[FUNC]|[MSG]");
    const char format[] = "%s<a<";
    int32_t error = 0;
    EXPECT_EQ(generate_arg_types(format, SIZE_MAX, nullptr, kFmt, &error), -4);
    EXPECT_EQ(error, FMT_ERR_ILLEGAL_SEPARATOR);
    EXPECT_EQ(capture.text(),
              "FATAL|Stdlib/Parsefmt:154|generate_arg_types|Assertion failed: Overflow detected\n");
    capture.clear();
    EXPECT_EQ(generate_arg_types(format, sizeof format - 1, nullptr, kFmt, &error), -4);
    EXPECT_EQ(capture.text(), "");
}

TEST(FormatParseItem, RefusesBadArguments)
{
    const char *format = "%d";
    const char *cursor = format;
    int32_t count = 0;
    int32_t error = -1;
    FormatItem item;
    EXPECT_EQ(ParseFormatItem(nullptr, format + 2, nullptr, &count, 0, 1, &item, &error), FMT_PARSE_ERROR);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(ParseFormatItem(&cursor, format + 2, nullptr, nullptr, 0, 1, &item, &error), FMT_PARSE_ERROR);
    EXPECT_EQ(ParseFormatItem(&cursor, format + 2, nullptr, &count, 0, 1, nullptr, &error), FMT_PARSE_ERROR);
    const char *pastEnd = format + 2;
    EXPECT_EQ(ParseFormatItem(&pastEnd, format + 1, nullptr, &count, 0, 0, &item, &error), FMT_PARSE_ERROR);
    count = TOLLAN_FMT_MAX_ARGS + 1;
    EXPECT_EQ(ParseFormatItem(&cursor, format + 2, nullptr, &count, 0, 0, &item, &error), FMT_PARSE_ERROR);
    EXPECT_EQ(cursor, format);
    // A null format is the empty one.
    EXPECT_EQ(generate_arg_types(nullptr, 5, nullptr, kFmt, nullptr), 1);
}

}  // namespace
