// The examples of docs/format-language.md that the other engine tests do not
// already make, so that the reference stays true.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <tollan/fmtio.h>

namespace {

std::string bytes(const char *data, int count)
{
    return std::string(data, static_cast<size_t>(count));
}

TEST(ReferenceExamples, TextItems)
{
    char s[64];
    ASSERT_EQ(Fmt(s, "%s<%d[w6p0] V=%f[p3]", 42, 1.25), 2);
    EXPECT_STREQ(s, "000042 V=1.250");
    ASSERT_EQ(Fmt(s, "%s<V=%d;", 5), 1);
    EXPECT_STREQ(s, "V=5;");
    int32_t n = 0;
    EXPECT_EQ(Scan("V=5;", "%s>V=%d;", &n), 1);
    EXPECT_EQ(n, 5);
    const int32_t array[3] = {10, 20, 30};
    ASSERT_EQ(Fmt(s, "%s<%*d[w*]", 3, 5, array), 1);
    EXPECT_STREQ(s, "   10,   20,   30");
    const int32_t a[3] = {7, -8, 9};
    ASSERT_EQ(Fmt(s, "%s<%3d[j2]; ", a), 1);
    EXPECT_STREQ(s, "7; -8; 9");
    ASSERT_EQ(Fmt(s, "%s<%f[e]|%f[e2p1]|%f[ef]", 1500.0, 1500.0, 1500.0), 3);
    EXPECT_STREQ(s, "1.5e+003|1.5e+03|1500");
    ASSERT_EQ(Fmt(s, "%s<%s[w4q]", "ab"), 1);
    EXPECT_EQ(bytes(s, 5), bytes("ab\0\0\0", 5));
    char text[16];
    n = 255;
    ASSERT_EQ(Scan(&n, "%d>%s", text), 1);
    EXPECT_STREQ(text, "255");
}

TEST(ReferenceExamples, BinaryItems)
{
    char s[16];
    ASSERT_EQ(Fmt(s, "%s<%d[b4o3210]", 0x11223344), 1);
    EXPECT_EQ(bytes(s, 4), "\x11\x22\x33\x44");
    ASSERT_EQ(Fmt(s, "%s<%d[b4r256]", 0x11223344), 1);
    EXPECT_EQ(bytes(s, 4), "\x44\x33\x22\x11");
    ASSERT_EQ(Fmt(s, "%s<%d[b4o1032]", 0x11223344), 1);
    EXPECT_EQ(bytes(s, 4), "\x33\x44\x11\x22");

    int16_t words[3] = {1, -2, 0x1234};
    char block[16];
    ASSERT_EQ(Fmt(block, "%s<%3d[b2o10]", words), 1);
    EXPECT_EQ(NumFmtdBytes(), 6);
    EXPECT_EQ(bytes(block, 6), bytes("\x00\x01\xFF\xFE\x12\x34", 6));
    int16_t back[3] = {};
    ASSERT_EQ(Scan(block, "%6c>%3d[b2o10]", back), 1);
    EXPECT_EQ(std::memcmp(back, words, sizeof words), 0);

    const char packed[8] = {0, 0, 0, 5, 0, 0, 1, 0};
    char unpacked[9] = {};
    ASSERT_EQ(Scan(packed, "%8c>%2d[b4o3210zi1]", unpacked), 1);
    int32_t second = 0;
    std::memcpy(&second, unpacked + 5, sizeof second);
    EXPECT_EQ(second, 256);

    unsigned char parts[4] = {};
    ASSERT_EQ(Fmt(parts, "%4c<%d[b4o3210]", 0x0A0B0C0D), 1);
    EXPECT_EQ(parts[0], 0x0A);
    EXPECT_EQ(parts[3], 0x0D);
}

}  // namespace
