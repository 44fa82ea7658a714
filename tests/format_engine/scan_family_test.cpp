// Scan through its exported functions: each modifier in a whole call, where
// a Scan stops, its counts, and the refusals.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <tollan/fmtio.h>

namespace {

TEST(ScanFamily, NumbersWithTheirModifiers)
{
    int32_t n = 0, m = 0;
    double volts = 0;
    EXPECT_EQ(Scan("12.5 7", "%s>%f[p3]%d", &volts, &n), 2);
    EXPECT_EQ(volts, 12.5);
    EXPECT_EQ(n, 7);
    EXPECT_EQ(Scan("12.5, 7", "%s>%f[x]%d", &volts, &n), 2);
    EXPECT_EQ(Scan("ff 17", "%s>%x%o", &n, &m), 2);
    EXPECT_EQ(n, 255);
    EXPECT_EQ(m, 15);
    EXPECT_EQ(Scan("ff", "%s>%d[r16]", &n), 1);
    EXPECT_EQ(Scan("11", "%s>%d[r*]", 8, &n), 1);
    EXPECT_EQ(n, 9);
    EXPECT_EQ(Scan("12345678", "%s>%d[w3]%d[w*]", &n, 2, &m), 2);
    EXPECT_EQ(n, 123);
    EXPECT_EQ(m, 45);
    EXPECT_EQ(Scan("**-42", "%s>%d[w5p*]", &n), 1);
    EXPECT_EQ(n, -42);
    int16_t s = 0;
    EXPECT_EQ(Scan("-300", "%s>%d[b2]", &s), 1);
    EXPECT_EQ(s, -300);
    uint8_t u = 0;
    EXPECT_EQ(Scan("200", "%s>%d[b1u]", &u), 1);
    EXPECT_EQ(u, 200);
    int64_t big = 0;
    EXPECT_EQ(Scan("-9000000000", "%s>%d[b8]", &big), 1);
    EXPECT_EQ(big, -9000000000LL);
    float f = 0;
    EXPECT_EQ(Scan("0.1", "%s>%f[b4]", &f), 1);
    EXPECT_EQ(f, 0.1f);
    char c = 0;
    EXPECT_EQ(Scan(" x", "%s>%c", &c), 1);
    EXPECT_EQ(c, ' ');
}

TEST(ScanFamily, ArraysSeparatorsOffsetsAndDiscards)
{
    int32_t a[4] = {};
    EXPECT_EQ(Scan("1, 2 ,3", "%s>%3d", a), 1);
    EXPECT_EQ(a[0] + a[1] + a[2], 6);
    EXPECT_EQ(Scan("4;5", "%s>%2d[i2j1];", a), 1);
    EXPECT_EQ(a[2], 4);
    EXPECT_EQ(a[3], 5);
    EXPECT_EQ(Scan("7 8", "%s>%*d", 2, a), 1);
    EXPECT_EQ(a[1], 8);
    int32_t n = 0;
    EXPECT_EQ(Scan("skip 9", "%s>%s[d]%d", &n), 1);
    EXPECT_EQ(n, 9);
    EXPECT_EQ(Scan("1 2", "%s>%d[d]%d", &n), 1);
    EXPECT_EQ(n, 2);
    EXPECT_EQ(Scan("xx12", "%s[i2]>%d", &n), 1);
    EXPECT_EQ(n, 12);
    EXPECT_EQ(Scan("123456", "%s[w3]>%d", &n), 1);
    EXPECT_EQ(n, 123);
}

TEST(ScanFamily, StringsAndTheirTerminators)
{
    char word[16] = "", rest[16] = "";
    EXPECT_EQ(Scan("  alpha beta", "%s>%s%s", word, rest), 2);
    EXPECT_STREQ(word, "alpha");
    EXPECT_STREQ(rest, "beta");
    EXPECT_EQ(Scan("alpha,beta", "%s>%s[t44x]%s", word, rest), 2);
    EXPECT_STREQ(word, "alpha");
    EXPECT_STREQ(rest, "beta");
    EXPECT_EQ(Scan("V=-12", "%s>%s[t#]%d", word, nullptr), -FMT_ERR_NULL_POINTER);
    EXPECT_EQ(NumScanItems(), 1);
    EXPECT_STREQ(word, "V=");
    EXPECT_EQ(Scan("abcdef", "%s>%s[w3]%s", word, rest), 2);
    EXPECT_STREQ(word, "abc");
    EXPECT_STREQ(rest, "def");
    EXPECT_EQ(Scan(" lead", "%s>%s[y]", word), 1);
    EXPECT_STREQ(word, "");
    std::strcpy(word, "ab");
    EXPECT_EQ(Scan("cd", "%s>%s[a]", word), 1);
    EXPECT_STREQ(word, "abcd");
    std::strcpy(word, "abcdef");
    EXPECT_EQ(Scan("XY", "%s>%s[q]", word), 1);
    EXPECT_STREQ(word, "XYcdef");
    std::strcpy(word, "ab");
    EXPECT_EQ(Scan("cdefgh", "%s>%s[w4a]", word), 1);  // the text already there counts
    EXPECT_STREQ(word, "abcd");
    EXPECT_EQ(Scan("cdefgh", "%s>%s[w4i5]", word), -FMT_ERR_WRITE_PAST_STRING);
    EXPECT_EQ(Scan("key=value", "%s>%s[j1]=%s", word, rest), 2);
    EXPECT_STREQ(word, "key");
    EXPECT_STREQ(rest, "value");
}

TEST(ScanFamily, LinesAndCommaSeparatedLines)
{
    char first[16] = "", second[16] = "";
    int32_t n = 0;
    EXPECT_EQ(Scan("a b,c d,3\nnext", "%l[c]>%s%s%d", first, second, &n), 3);
    EXPECT_STREQ(first, "a b");
    EXPECT_STREQ(second, "c d");
    EXPECT_EQ(n, 3);
    EXPECT_EQ(Scan("one two\r\nthree", "%l>%l", first), 1);
    EXPECT_STREQ(first, "one two");
    EXPECT_EQ(NumScanBytes(), 7);
}

TEST(ScanFamily, WhereAScanStopsAndWhatItCounts)
{
    int32_t a = 0, b = 0;
    EXPECT_EQ(Scan("1 2", "%s>%d%d%d", &a, &b, &b), 2);
    EXPECT_EQ(NumScanItems(), 2);
    EXPECT_EQ(NumScanBytes(), 3);
    EXPECT_EQ(Scan("V=1 I=2", "%s>V=%d W=%d", &a, &b), 1);
    EXPECT_EQ(NumScanBytes(), 3);
    EXPECT_EQ(Scan("", "%s>%d", &a), 0);
    EXPECT_EQ(Scan("1 x", "%s>%d%d", &a, &b), -FMT_ERR_NO_INTEGER);
    EXPECT_EQ(NumScanItems(), 1);
    EXPECT_EQ(NumScanBytes(), 1);
}

TEST(ScanFamily, NumberAndArraySourcesAreFormattedFirst)
{
    const int32_t value = -1234;
    char text[16] = "";
    EXPECT_EQ(Scan(&value, "%d>%s", text), 1);
    EXPECT_STREQ(text, "-1234");
    const unsigned char block[6] = {0x00, 0x01, 0xFF, 0xFE, 0x12, 0x34};
    int16_t words[3] = {};
    EXPECT_EQ(Scan(block, "%6c>%3d[b2o10]", words), 1);
    EXPECT_EQ(words[0], 1);
    EXPECT_EQ(words[1], -2);
    EXPECT_EQ(words[2], 0x1234);
    double x = 0;
    const double stored = 0.1;
    EXPECT_EQ(Scan(&stored, "%f>%f", &x), 1);
    EXPECT_EQ(x, 0.1);
}

TEST(ScanFamily, RefusalsWithTheirMessages)
{
    int32_t n = 0;
    int8_t small = 0;
    float f = 0;
    EXPECT_EQ(Scan("300", "%s>%d[b1]", &small), -FMT_ERR_INTEGER_SIGNED_OVERFLOW);
    EXPECT_EQ(Scan("300", "%s>%d[b1u]", &small), -FMT_ERR_INTEGER_ABSOLUTE_OVERFLOW);
    EXPECT_EQ(Scan("1e39", "%s>%f[b4]", &f), -FMT_ERR_FLOAT_OVERFLOW);
    EXPECT_EQ(Scan("x", "%s>%f", &f), -FMT_ERR_NO_REAL);
    EXPECT_EQ(Scan("  5", "%s>%d[w2]", &n), -FMT_ERR_WIDTH_TOO_SMALL);
    EXPECT_EQ(Scan("5", "%s[w512]>%d", &n), 1);  // a string source may be wider
    EXPECT_EQ(Scan(&n, "%d[w512]>%s", &n), -FMT_ERR_WIDTH_EXCEEDED);
    EXPECT_EQ(Scan("5", "%s[a]>%d", &n), -FMT_ERR_INCOMPATIBLE_PARAMETER);
    EXPECT_EQ(Scan("5", "%s>%d[w*]", -2, &n), -FMT_ERR_NEGATIVE_WIDTH);
    EXPECT_EQ(Scan("5", "%s>%d[r*]", 12, &n), -FMT_ERR_ILLEGAL_ASTERISK_VALUE);
    EXPECT_EQ(Scan("5", "%s>%*d", -1, &n), -FMT_ERR_ILLEGAL_ASTERISK_VALUE);
    EXPECT_EQ(Scan("5", "%s>%d", nullptr), -FMT_ERR_NULL_POINTER);
    EXPECT_EQ(Scan(nullptr, "%s>%d", &n), -FMT_ERR_NULL_POINTER);
    EXPECT_EQ(Scan("5", "%s>%s[c]", &n), -FMT_ERR_C_WITHOUT_LINE);
    EXPECT_EQ(Scan("5", "%s<%d", &n), -FMT_ERR_ILLEGAL_SEPARATOR);
    EXPECT_EQ(Scan("5", "%%s>%d", &n), -FMT_ERR_INCOMPATIBLE_PARAMETER);
}

TEST(ScanFamily, AHugeCountStopsWhereTheSourceEnds)
{
    int32_t a[3] = {};
    EXPECT_EQ(Scan("1,2", "%s>%*d", 2000000000, a), 0);
    EXPECT_EQ(a[1], 2);
    EXPECT_EQ(NumScanBytes(), 3);
}

}  // namespace
