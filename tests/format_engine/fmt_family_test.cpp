// Fmt through its exported functions: each modifier in a whole call, the
// target's own modifiers, and the refusals.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <tollan/fmtio.h>

namespace {

struct Case {
    const char *format;
    int32_t result;
    const char *text;
};

TEST(FmtFamily, OneCallPerModifier)
{
    char out[256];
    const int32_t words[3] = {7, -8, 9};
    const double reals[2] = {0.5, 1.25};
    auto check = [&](const Case &c, int32_t got) {
        EXPECT_EQ(got, c.result) << c.format;
        if (c.result >= 0) {
            EXPECT_STREQ(out, c.text) << c.format;
        }
    };
    check({"%s<%d", 1, "42"}, Fmt(out, "%s<%d", 42));
    check({"%d (implied target)", 1, "42"}, Fmt(out, "%d", 42));
    check({"<%d", 1, "42"}, Fmt(out, "<%d", 42));
    check({"%s<%d[w*]", 1, "    42"}, Fmt(out, "%s<%d[w*]", 6, 42));
    check({"%s<%d[b8]", 1, "-9000000000"}, Fmt(out, "%s<%d[b8]", -9000000000LL));
    check({"%s<%d[r*]", 1, "ff"}, Fmt(out, "%s<%d[r*]", 16, 255));
    check({"%s<%c%c", 2, "ok"}, Fmt(out, "%s<%c%c", 'o', 'k'));
    check({"%s<%3d", 1, "7,-8,9"}, Fmt(out, "%s<%3d", words));
    check({"%s<%*d", 1, "7,-8"}, Fmt(out, "%s<%*d", 2, words));
    check({"%s<%*d[w*]", 1, "   7,  -8,   9"}, Fmt(out, "%s<%*d[w*]", 3, 4, words));
    check({"%s<%2d[i1]", 1, "-8,9"}, Fmt(out, "%s<%2d[i1]", words));
    check({"%s<%3d[j1]; ", 1, "7;-8;9 "}, Fmt(out, "%s<%3d[j1]; ", words));
    check({"%s<%3d[j2]; ", 1, "7; -8; 9"}, Fmt(out, "%s<%3d[j2]; ", words));
    check({"%s<%f", 1, "1.5"}, Fmt(out, "%s<%f", 1.5));
    check({"%s<%f[p*]", 1, "2.00"}, Fmt(out, "%s<%f[p*]", 2, 2.0));
    check({"%s<%f[p3t]", 1, "2.000"}, Fmt(out, "%s<%f[p3t]", 2.0));
    check({"%s<%f[ef]", 1, "1500"}, Fmt(out, "%s<%f[ef]", 1500.0));
    check({"%s<%f[b4]", 1, "0.5"}, Fmt(out, "%s<%f[b4]", 0.5));
    check({"%s<%2f", 1, "0.5,1.25"}, Fmt(out, "%s<%2f", reals));
    check({"%s<%s", 1, "text"}, Fmt(out, "%s<%s", "text"));
    check({"%s<%s[w6y]", 1, "    ab"}, Fmt(out, "%s<%s[w6y]", "ab"));
    check({"%s<%s[i2]", 1, "xt"}, Fmt(out, "%s<%s[i2]", "text"));
    check({"%s<%s[t#]", 1, "V="}, Fmt(out, "%s<%s[t#]", "V=-12"));
    check({"%s<%s[x]", 1, "ab"}, Fmt(out, "%s<%s[x]", "ab"));
    check({"%s<V=%%%d%%%<%>%[%]", 1, "V=%5%<>[]"}, Fmt(out, "%s<V=%%%d%%%<%>%[%]", 5));
    check({"%s<%d %f[p6]", 2, "-3 0.250000"}, Fmt(out, "%s<%d %f[p6]", -3, 0.25));
}

TEST(FmtFamily, TheTargetsOwnModifiers)
{
    char out[16];
    std::strcpy(out, "abc");
    EXPECT_EQ(Fmt(out, "%s[a]<%d", 42), 1);
    EXPECT_STREQ(out, "abc42");
    EXPECT_EQ(NumFmtdBytes(), 2);
    std::strcpy(out, "abcdef");
    EXPECT_EQ(Fmt(out, "%s[i2]<%d", 42), 1);
    EXPECT_STREQ(out, "ab42");
    std::strcpy(out, "abcdef");
    EXPECT_EQ(Fmt(out, "%s[q]<%d", 42), 1);
    EXPECT_STREQ(out, "42cdef");
    std::memset(out, '#', sizeof out);
    EXPECT_EQ(Fmt(out, "%s[w4]<%d", 123456), -FMT_ERR_WRITE_PAST_STRING);
    EXPECT_EQ(std::string(out, 6), std::string("1234\0#", 6));
    EXPECT_EQ(NumFmtdBytes(), 4);
    std::memset(out, '#', sizeof out);
    EXPECT_EQ(Fmt(out, "%s[w*]<%s", 3, "xyz"), 1);
    EXPECT_STREQ(out, "xyz");
    // Text already there and the offset take their part of the width.
    std::strcpy(out, "ab");
    EXPECT_EQ(Fmt(out, "%s[w5ai1]<%d", 12345), -FMT_ERR_WRITE_PAST_STRING);
    EXPECT_EQ(std::string(out, 6), std::string("ab\0"
                                               "12\0",
                                               6));
    std::memset(out, '#', sizeof out);
    EXPECT_EQ(Fmt(out, "%s[w3i4]<%d", 1), -FMT_ERR_WRITE_PAST_STRING);
    EXPECT_EQ(out[4], '#');
}

TEST(FmtFamily, NumberAndArrayTargetsReadTheFormattedText)
{
    int32_t n = 0;
    EXPECT_EQ(Fmt(&n, "%d<%s", "-12"), 1);
    EXPECT_EQ(n, -12);
    double x = 0;
    EXPECT_EQ(Fmt(&x, "%f<%s%d", "2.", 5), 2);
    EXPECT_EQ(x, 2.5);
    unsigned char bytes[4] = {};
    EXPECT_EQ(Fmt(bytes, "%4c<%d[b4o3210]", 0x01020304), 1);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(bytes[3], 4);
    EXPECT_EQ(Fmt(&n, "%d<%s", "x"), -FMT_ERR_NO_INTEGER);
    EXPECT_EQ(Fmt(&x, "%f<%s", ""), -FMT_ERR_NO_REAL);
}

TEST(FmtFamily, BadArgumentsAndFormatsAreRefusedWithTheirMessages)
{
    char out[64] = "untouched";
    const Case cases[] = {
        {"%s<%d[w512]", -FMT_ERR_WIDTH_EXCEEDED, nullptr},
        {"%s<%d[w2]", -FMT_ERR_WIDTH_EXCEEDED, nullptr},
        {"%s<%d[d]", -FMT_ERR_DISCARD_IN_FMT, nullptr},
        {"%s<%l", -FMT_ERR_LINE_IN_FMT, nullptr},
        {"%s<%d[b9]", -FMT_ERR_INTEGER_SIZE, nullptr},
        {"%s<%q", -FMT_ERR_UNKNOWN_SPECIFIER, nullptr},
        {"%s<%d[w6u", -FMT_ERR_MISSING_BRACKET, nullptr},
        {"%s<a<b", -FMT_ERR_ILLEGAL_SEPARATOR, nullptr},
        {"%s<%s[a]", -FMT_ERR_INCOMPATIBLE_PARAMETER, nullptr},
        {"%%s<%d", -FMT_ERR_INCOMPATIBLE_PARAMETER, nullptr},
    };
    for (const Case &c : cases) EXPECT_EQ(Fmt(out, c.format, 123, "s"), c.result) << c.format;
    EXPECT_EQ(Fmt(out, "%s<%d[w*]", -1, 5), -FMT_ERR_NEGATIVE_WIDTH);
    EXPECT_EQ(Fmt(out, "%s<%d[r*]", 3, 5), -FMT_ERR_ILLEGAL_ASTERISK_VALUE);
    EXPECT_EQ(Fmt(out, "%s<%*d", -1, out), -FMT_ERR_ILLEGAL_ASTERISK_VALUE);
    EXPECT_EQ(Fmt(out, "%s<%f[p*]", -1, 1.0), -FMT_ERR_ILLEGAL_ASTERISK_VALUE);
    EXPECT_EQ(Fmt(out, "%s<%*d", 0, nullptr), -FMT_ERR_NULL_POINTER);
    EXPECT_EQ(Fmt(out, "%s<%s", nullptr), -FMT_ERR_NULL_POINTER);
    EXPECT_EQ(Fmt(nullptr, "%s<%d", 1), -FMT_ERR_NULL_POINTER);
    EXPECT_EQ(Fmt(out, nullptr), -FMT_ERR_NULL_POINTER);
    EXPECT_STREQ(out, "untouched");
    char wide[256];
    EXPECT_EQ(Fmt(wide, "%s<%f[p*]", 1000, 1.0), 1);  // the precision stops at 200
    EXPECT_EQ(std::strlen(wide), 202u);
}

TEST(FmtFamily, AnEmptyFormatOrOneWithoutItemsGivesAnEmptyString)
{
    char out[8] = "xx";
    for (const char *format : {"", "%s<"}) {
        EXPECT_EQ(Fmt(out, format), 0);
        EXPECT_STREQ(out, "");
    }
    EXPECT_EQ(Fmt(out, "%s<hi"), 0);
    EXPECT_STREQ(out, "hi");
}

}  // namespace
