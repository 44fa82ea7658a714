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
    EXPECT_EQ(n * 100 + m, 25515);
    EXPECT_EQ(Scan("ff", "%s>%d[r16]", &n), 1);
    EXPECT_EQ(Scan("11", "%s>%d[r*]", 8, &n), 1);
    EXPECT_EQ(n, 9);
    EXPECT_EQ(Scan("12345678", "%s>%d[w3]%d[w*]", &n, 2, &m), 2);
    EXPECT_EQ(n * 100 + m, 12345);
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
    EXPECT_EQ(a[2] * 10 + a[3], 45);
    EXPECT_EQ(Scan("7 8", "%s>%*d", 2, a), 1);
    EXPECT_EQ(a[1], 8);
    const struct {
        const char *source, *format;
        int32_t n;
    } cases[] = {
        {"skip 9", "%s>%s[d]%d", 9},
        {"1 2", "%s>%d[d]%d", 2},
        {"xx12", "%s[i2]>%d", 12},
        {"123456", "%s[w3]>%d", 123},
    };
    for (const auto &c : cases) {
        int32_t n = 0;
        EXPECT_EQ(Scan(c.source, c.format, &n), 1) << c.format;
        EXPECT_EQ(n, c.n) << c.format;
    }
}

TEST(ScanFamily, StringsAndTheirTerminators)
{
    char word[16] = "", rest[16] = "";
    EXPECT_EQ(Scan("  alpha beta", "%s>%s%s", word, rest), 2);
    EXPECT_EQ(std::string(word) + "|" + rest, "alpha|beta");
    EXPECT_EQ(Scan("alpha,beta", "%s>%s[t44x]%s", word, rest), 2);
    EXPECT_EQ(std::string(word) + "|" + rest, "alpha|beta");
    EXPECT_EQ(Scan("V=-12", "%s>%s[t#]%d", word, nullptr), -FMT_ERR_NULL_POINTER);
    EXPECT_EQ(NumScanItems(), 1);
    EXPECT_STREQ(word, "V=");
    EXPECT_EQ(Scan("key=value", "%s>%s[j1]=%s", word, rest), 2);
    EXPECT_EQ(std::string(word) + "|" + rest, "key|value");
    // What the target already holds: appended to, overwritten in part, and
    // counted in the width.
    const struct {
        const char *before, *source, *format;
        int32_t result;
        const char *after;
    } cases[] = {
        {"ab", "cd", "%s>%s[a]", 1, "abcd"},
        {"abcdef", "XY", "%s>%s[q]", 1, "XYcdef"},
        {"ab", "cdefgh", "%s>%s[w4a]", 1, "abcd"},
        {"ab", "cdefgh", "%s>%s[w4i5]", -FMT_ERR_WRITE_PAST_STRING, "ab"},
    };
    for (const auto &c : cases) {
        std::strcpy(word, c.before);
        EXPECT_EQ(Scan(c.source, c.format, word), c.result) << c.format;
        EXPECT_STREQ(word, c.after) << c.format;
    }
}

TEST(ScanFamily, LinesAndCommaSeparatedLines)
{
    char first[16] = "", second[16] = "";
    int32_t n = 0;
    EXPECT_EQ(Scan("a b,c d,3\nnext", "%l[c]>%s%s%d", first, second, &n), 3);
    EXPECT_EQ(std::string(first) + "|" + second + "|" + std::to_string(n), "a b|c d|3");
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
    int32_t array[3] = {};
    EXPECT_EQ(Scan("1,2", "%s>%*d", 2000000000, array), 0);  // a huge count stops at the end
    EXPECT_EQ(array[1], 2);
    EXPECT_EQ(NumScanBytes(), 3);
}

TEST(ScanFamily, NumberAndArraySourcesAreFormattedFirst)
{
    const int32_t value = -1234;
    char text[16] = "";
    EXPECT_EQ(Scan(&value, "%d>%s", text), 1);
    EXPECT_STREQ(text, "-1234");
    const unsigned char block[6] = {0x00, 0x01, 0xFF, 0xFE, 0x12, 0x34};
    int16_t words[3] = {};
    const int16_t expected[3] = {1, -2, 0x1234};
    EXPECT_EQ(Scan(block, "%6c>%3d[b2o10]", words), 1);
    EXPECT_EQ(std::memcmp(words, expected, sizeof words), 0);
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

}  // namespace
