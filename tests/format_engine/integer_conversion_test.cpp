// Integer elements: the text Fmt writes for each radix, size, sign, width
// and pad, what Scan makes of texts, and the refusals of both.
#include <gtest/gtest.h>

#include <string>

#include "fmtio/fmt_integer.h"
#include "fmtio/scan_integer.h"
#include "items.h"

namespace tollan::fmtio {
namespace {

using namespace testing;

struct FormatCase {
    uint64_t bits;
    uint32_t radix;
    int64_t size;
    bool isSigned;
    int64_t width;  // 0: none
    char pad;
    bool upper;
    const char *text;
};

TEST(IntegerFormat, TextOfEachRadixSizeSignWidthAndPad)
{
    const FormatCase cases[] = {
        {42, 10, 4, true, 0, ' ', false, "42"},
        {static_cast<uint32_t>(-42), 10, 4, true, 0, ' ', false, "-42"},
        {static_cast<uint32_t>(-1), 10, 4, false, 0, ' ', false, "4294967295"},
        {0xFF, 10, 1, true, 0, ' ', false, "-1"},
        {0xFF, 10, 1, false, 0, ' ', false, "255"},
        {0x8000, 10, 2, true, 0, ' ', false, "-32768"},
        {0x800000, 10, 3, true, 0, ' ', false, "-8388608"},
        {UINT64_MAX, 10, 8, false, 0, ' ', false, "18446744073709551615"},
        {uint64_t{1} << 63, 10, 8, true, 0, ' ', false, "-9223372036854775808"},
        {UINT64_MAX, 8, 8, false, 0, ' ', false, "1777777777777777777777"},
        {0xBEEF, 16, 4, false, 0, ' ', false, "beef"},
        {0xBEEF, 16, 4, false, 0, ' ', true, "BEEF"},
        {static_cast<uint32_t>(-16), 16, 4, true, 0, ' ', false, "-10"},
        {0x1FF, 16, 1, false, 0, ' ', false, "ff"},  // bytes beyond the size are not the value's
        {42, 10, 4, true, 6, '0', false, "000042"},
        {static_cast<uint32_t>(-42), 10, 4, true, 6, '0', false, "-00042"},
        {static_cast<uint32_t>(-42), 10, 4, true, 6, '*', false, "***-42"},
        {42, 10, 4, true, 2, ' ', false, "42"},
        {8, 8, 4, false, 4, '0', false, "0010"},
    };
    for (const FormatCase &c : cases) {
        FormatItem item = integerItem(c.radix, c.size, c.isSigned);
        if (c.width) setWidth(item, c.width);
        item.as.integer.padCharacter = static_cast<uint8_t>(c.pad);
        item.xFlag = c.upper;
        ByteBuffer out;
        EXPECT_EQ(formatInteger(out, resolved(item, Role::fmtSource), c.bits), 0) << c.text;
        EXPECT_EQ(std::string(out.data(), out.size()), c.text);
    }
}

struct ScanCase {
    const char *text;
    uint32_t radix;
    int64_t size;
    bool isSigned;
    int64_t width;  // 0: none
    char pad;
    int32_t result;
    uint64_t bits;    // when result is 0
    size_t consumed;  // bytes read, when result is 0
};

TEST(IntegerScan, TextsAndTheirValuesOrRefusals)
{
    const ScanCase cases[] = {
        {"42", 10, 4, true, 0, ' ', 0, 42, 2},
        {"  \t-42 rest", 10, 4, true, 0, ' ', 0, static_cast<uint64_t>(-42), 6},
        {"+7", 10, 4, true, 0, ' ', 0, 7, 2},
        {"2147483647", 10, 4, true, 0, ' ', 0, 2147483647, 10},
        {"-2147483648", 10, 4, true, 0, ' ', 0, static_cast<uint64_t>(INT64_C(-2147483648)), 11},
        {"2147483648", 10, 4, true, 0, ' ', FMT_ERR_INTEGER_SIGNED_OVERFLOW, 0, 0},
        {"-129", 10, 1, true, 0, ' ', FMT_ERR_INTEGER_SIGNED_OVERFLOW, 0, 0},
        {"256", 10, 1, false, 0, ' ', FMT_ERR_INTEGER_ABSOLUTE_OVERFLOW, 0, 0},
        {"18446744073709551615", 10, 8, false, 0, ' ', 0, UINT64_MAX, 20},
        {"18446744073709551616", 10, 8, false, 0, ' ', FMT_ERR_INTEGER_ABSOLUTE_OVERFLOW, 0, 0},
        {"99999999999999999999999", 10, 8, true, 0, ' ', FMT_ERR_INTEGER_SIGNED_OVERFLOW, 0, 0},
        {"-1", 10, 4, false, 0, ' ', FMT_ERR_NO_INTEGER, 0, 0},
        {"BeEf", 16, 2, false, 0, ' ', 0, 0xBEEF, 4},
        {"789", 8, 4, false, 0, ' ', 0, 7, 1},
        {"abc", 10, 4, true, 0, ' ', FMT_ERR_NO_INTEGER, 0, 0},
        {"   ", 10, 4, true, 0, ' ', kSourceEnded, 0, 0},
        {"123456", 10, 4, true, 3, ' ', 0, 123, 3},
        {"   42", 10, 4, true, 3, ' ', FMT_ERR_WIDTH_TOO_SMALL, 0, 0},
        {"***-42", 10, 4, true, 6, '*', 0, static_cast<uint64_t>(-42), 6},
        {"-00042", 10, 4, true, 6, '0', 0, static_cast<uint64_t>(-42), 6},
        {"000000", 10, 4, true, 6, '0', 0, 0, 6},
    };
    for (const ScanCase &c : cases) {
        FormatItem item = integerItem(c.radix, c.size, c.isSigned);
        if (c.width) setWidth(item, c.width);
        item.as.integer.padCharacter = static_cast<uint8_t>(c.pad);
        ScanText text{c.text, c.text + std::strlen(c.text)};
        uint64_t bits = 0;
        const int32_t result = scanInteger(text, resolved(item, Role::scanTarget), &bits);
        EXPECT_EQ(result, c.result) << c.text;
        if (result != 0 || c.result != 0) continue;
        EXPECT_EQ(widenInteger(bits, c.size, c.isSigned), widenInteger(c.bits, c.size, c.isSigned)) << c.text;
        EXPECT_EQ(static_cast<size_t>(text.at - c.text), c.consumed) << c.text;
    }
}

TEST(IntegerResolve, RadixAndWidthLimits)
{
    static ArgumentValue values[TOLLAN_FMT_MAX_ARGS + 2] = {};
    FormatItem item = integerItem();
    item.as.integer.radixMarker = 2;  // r*, the second argument
    Conversion conversion;
    for (int64_t radix : {2, 7, 0, -10, 257}) {
        values[2].integer = radix;
        EXPECT_EQ(resolveConversion(item, values, Role::fmtSource, false, &conversion),
                  FMT_ERR_ILLEGAL_ASTERISK_VALUE)
            << radix;
    }
    values[2].integer = 16;
    EXPECT_EQ(resolveConversion(item, values, Role::fmtSource, false, &conversion), 0);
    EXPECT_EQ(conversion.radix, 16u);

    item = integerItem();
    item.widthMarker = 3;
    values[3].integer = 512;
    EXPECT_EQ(resolveConversion(item, values, Role::fmtSource, false, &conversion), FMT_ERR_WIDTH_EXCEEDED);
    EXPECT_EQ(resolveConversion(item, values, Role::scanSource, false, &conversion), FMT_ERR_WIDTH_EXCEEDED);
    EXPECT_EQ(resolveConversion(item, values, Role::scanTarget, false, &conversion), 0);
    values[3].integer = 511;
    EXPECT_EQ(resolveConversion(item, values, Role::fmtSource, false, &conversion), 0);
    values[3].integer = 0;
    EXPECT_EQ(resolveConversion(item, values, Role::fmtSource, false, &conversion), 0);
    EXPECT_EQ(conversion.width, kUnlimited);
    values[3].integer = -1;
    EXPECT_EQ(resolveConversion(item, values, Role::fmtSource, false, &conversion), FMT_ERR_NEGATIVE_WIDTH);
}

}  // namespace
}  // namespace tollan::fmtio
