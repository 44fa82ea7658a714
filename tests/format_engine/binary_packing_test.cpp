// Binary items: integers and arrays written as raw bytes in the stated byte
// order and read back from them, against bytes worked out by hand.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "fmtio/fmt_source.h"
#include "fmtio/scan_target.h"
#include "items.h"

namespace tollan::fmtio {
namespace {

using namespace testing;

std::string bytesOf(const ByteBuffer &out)
{
    return std::string(out.data(), out.size());
}

struct PackCase {
    uint32_t radix;
    int64_t size;
    const char *order;  // o digits, or ""
    uint64_t value;
    std::string bytes;
};

TEST(BinaryPacking, ScalarsInEachByteOrder)
{
    const PackCase cases[] = {
        {256, 1, "", 'A', "A"},
        {256, 4, "", 0x11223344, "\x44\x33\x22\x11"},
        {256, 4, "3210", 0x11223344, "\x11\x22\x33\x44"},  // more orders: the round-trip test
        {10, 2, "10", 0xA1B2, "\xA1\xB2"},                 // an o makes any integer binary
        {256, 4, "32", 0x11223344, "\x11\x22\x22\x11"},    // unnamed positions keep their own byte
    };
    for (const PackCase &c : cases) {
        FormatItem item = integerItem(c.radix, c.size, false);  // %d[bN r256 o...]
        item.sizeMarker = FMT_MARKER_LITERAL;
        item.as.integer.radixMarker = FMT_MARKER_LITERAL;
        setByteOrder(item, c.order);
        const Conversion conversion = resolved(item, Role::fmtSource);
        ByteBuffer out;
        ASSERT_EQ(
            formatParameter(out, conversion, ArgumentValue{static_cast<int64_t>(c.value), 0, nullptr}, true),
            0);
        EXPECT_EQ(bytesOf(out), c.bytes) << c.order;

        ScanText text{c.bytes.data(), c.bytes.data() + c.bytes.size()};
        uint64_t back = 0;
        ASSERT_EQ(scanParameter(text, conversion, &back), 0);
        if (std::string(c.order) != "32") {
            EXPECT_EQ(back, c.value) << c.order;
        }
    }
}

TEST(BinaryPacking, ACharacterPassedByValueIsOneByteOrAsManyAsItsOrderNames)
{
    FormatItem item = integerItem(256, 4, false);  // %c[b2] passed by value arrives as an int
    ByteBuffer out;
    ASSERT_EQ(formatParameter(out, resolved(item, Role::fmtSource), ArgumentValue{'Z', 0, nullptr}, true), 0);
    EXPECT_EQ(bytesOf(out), "Z");
    setByteOrder(item, "01");  // %c[b2o01]
    out.clear();
    ASSERT_EQ(formatParameter(out, resolved(item, Role::fmtSource), ArgumentValue{0x4142, 0, nullptr}, true),
              0);
    EXPECT_EQ(bytesOf(out), "BA");
}

TEST(BinaryPacking, ArraysOfBigEndianWordsHaveNoSeparators)
{
    FormatItem item = integerItem(10, 2, true);
    setRepetition(item, 3);
    setByteOrder(item, "10");
    const Conversion conversion = resolved(item, Role::fmtSource);
    const int16_t words[3] = {1, -2, 0x1234};
    ByteBuffer out;
    ASSERT_EQ(formatParameter(out, conversion, ArgumentValue{0, 0, words}, false), 0);
    EXPECT_EQ(bytesOf(out), std::string("\x00\x01\xFF\xFE\x12\x34", 6));

    int16_t back[4] = {9, 9, 9, 9};
    ScanText text{out.data(), out.data() + out.size()};
    ASSERT_EQ(scanParameter(text, conversion, back), 0);
    EXPECT_EQ(std::memcmp(back, words, sizeof words), 0);
    EXPECT_EQ(back[3], 9);  // nothing past the count

    ScanText shortText{out.data(), out.data() + 5};
    EXPECT_EQ(scanParameter(shortText, conversion, back), kSourceEnded);
}

TEST(BinaryPacking, AZItemIsAByteBufferWithItsOffsetInBytes)
{
    FormatItem item = integerItem(256, 4, false);
    item.sizeMarker = FMT_MARKER_LITERAL;
    item.zFlag = 1;
    setRepetition(item, 2);
    setByteOrder(item, "3210");
    item.iValue = 1;
    item.iMarker = FMT_MARKER_LITERAL;
    const Conversion conversion = resolved(item, Role::scanTarget);
    const std::string block("\x00\x00\x00\x05\xFF\xFF\xFF\xFE", 8);
    char buffer[9] = {};
    ScanText text{block.data(), block.data() + block.size()};
    ASSERT_EQ(scanParameter(text, conversion, buffer), 0);
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(std::string(buffer + 1, 8), std::string("\x05\x00\x00\x00\xFE\xFF\xFF\xFF", 8));

    ByteBuffer out;
    ASSERT_EQ(formatParameter(out, conversion, ArgumentValue{0, 0, buffer}, false), 0);
    EXPECT_EQ(bytesOf(out), block);
}

}  // namespace
}  // namespace tollan::fmtio
