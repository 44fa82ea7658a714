// Formats and sources that are cut, huge or hostile: every call returns a
// count or a message number, and nothing is read or written out of bounds
// (the sanitizer builds watch the latter).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <tollan/fmtio.h>

namespace {

// Cut after the separator only: before it, the first item would become a
// source and take the arguments meant for others, which no engine can detect.
TEST(BadInput, FormatsCutAtEveryPosition)
{
    const std::string fmtFormat = "%s[w40a]<%d[w6p0b4] %f[p3e2] %3d[j1], %s[w5y]%x[r16u]";
    const std::string scanFormat = "%l[c]>%d[w6p0b4] %f[p3e2] %3d[j1], %s[w5y]%x[r16u]";
    const int32_t words[3] = {1, 2, 3};
    for (size_t length = fmtFormat.find('<') + 1; length <= fmtFormat.size(); ++length) {
        char out[128] = "";
        const int32_t result = Fmt(out, fmtFormat.substr(0, length).c_str(), 42, 1.5, words, "abc", 255);
        EXPECT_TRUE(result >= 0 || (result <= -206 && result >= -259)) << length << ": " << result;
    }
    int32_t n = 0, array[3] = {};
    double x = 0;
    char text[8] = "";
    for (size_t length = scanFormat.find('>') + 1; length <= scanFormat.size(); ++length) {
        const int32_t result = Scan("000042 1.5e+00 1,2,3, abc ff", scanFormat.substr(0, length).c_str(), &n,
                                    &x, array, text, &n);
        EXPECT_TRUE(result >= 0 || (result <= -206 && result >= -259)) << length << ": " << result;
    }
}

TEST(BadInput, AFormatOfOneMebibyte)
{
    const std::string format = "%s<" + std::string(1 << 20, 'x');
    std::vector<char> out((1 << 20) + 1);
    EXPECT_EQ(Fmt(out.data(), format.c_str()), 0);
    EXPECT_EQ(NumFmtdBytes(), 1 << 20);
    EXPECT_EQ(Fmt(out.data(), (format + "%d[w6").c_str(), 1), -FMT_ERR_INTEGER_TOO_BIG);
    const std::string source(1 << 20, '7');
    int64_t big = 0;
    EXPECT_EQ(Scan(source.c_str(), "%s>%d[b8]", &big), -FMT_ERR_INTEGER_SIGNED_OVERFLOW);
}

TEST(BadInput, SourcesThatEndMidNumber)
{
    int32_t n = 0;
    double x = 0;
    const struct {
        const char *source;
        const char *format;
        int32_t result;
    } cases[] = {
        {"-", "%s>%d", -FMT_ERR_NO_INTEGER},
        {"+", "%s>%f", -FMT_ERR_NO_REAL},
        {"1e", "%s>%f", 1},
        {"1.", "%s>%f", 1},
        {"12", "%s>%d[w4]", 1},
        {"0x", "%s>%x", 1},
        {"\x01\x02", "%s>%c[b4o3210]", 0},
        {"1,", "%s>%2d", 0},
        {"99999999999", "%s>%d", -FMT_ERR_INTEGER_SIGNED_OVERFLOW},
    };
    for (const auto &c : cases)
        EXPECT_EQ(Scan(c.source, c.format, c.format[4] == 'f' ? static_cast<void *>(&x) : &n), c.result)
            << c.source << " " << c.format;
}

}  // namespace
