// Real elements: the notations, precision, exponent digits, trimming and
// width of Fmt, and what Scan reads, rounds and refuses.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "fmtio/fmt_real.h"
#include "fmtio/scan_real.h"
#include "items.h"

namespace tollan::fmtio {
namespace {

using namespace testing;

struct FormatCase {
    double value;
    uint32_t precision;  // kNoPrecision: none
    bool exponential;
    uint32_t exponentDigits;
    bool trim;
    int64_t width;  // 0: none
    const char *text;
};

TEST(RealFormat, NotationsPrecisionExponentTrimAndWidth)
{
    const FormatCase cases[] = {
        {1.25, kNoPrecision, false, 3, false, 0, "1.25"},
        {0.1, kNoPrecision, false, 3, false, 0, "0.1"},
        {-2.5, 3, false, 3, false, 0, "-2.500"},
        {2.0 / 3.0, 6, false, 3, false, 0, "0.666667"},
        {2.5, 0, false, 3, false, 0, "2"},  // ties go to even, exactly
        {1e21, kNoPrecision, false, 3, false, 0, "1000000000000000000000"},
        {1500, 2, true, 3, false, 0, "1.50e+003"},
        {1500, kNoPrecision, true, 3, false, 0, "1.5e+003"},
        {1.5e-7, 1, true, 2, false, 0, "1.5e-07"},
        {1.5e-7, 1, true, 5, false, 0, "1.5e-00007"},
        {2.5, 4, false, 3, true, 0, "2.5"},
        {3.0, 4, false, 3, true, 0, "3"},
        {1500, 3, true, 3, true, 0, "1.5e+003"},
        {1.25, 2, false, 3, false, 8, "    1.25"},
        {INFINITY, kNoPrecision, false, 3, false, 0, "inf"},
        {-INFINITY, 2, true, 3, false, 0, "-inf"},
    };
    for (const FormatCase &c : cases) {
        FormatItem item = realItem();
        if (c.precision != kNoPrecision) setPrecision(item, c.precision);
        item.as.real.exponential = c.exponential;
        item.as.real.exponentDigits = c.exponentDigits;
        item.as.real.rtFlag = c.trim;
        if (c.width) setWidth(item, c.width);
        ByteBuffer out;
        EXPECT_EQ(formatReal(out, resolved(item, Role::fmtSource), c.value, false), 0) << c.text;
        EXPECT_EQ(std::string(out.data(), out.size()), c.text);
    }
}

TEST(RealFormat, UpperCaseExponentAndCaps)
{
    const double most = -std::numeric_limits<double>::max();
    ByteBuffer out;
    const auto format = [&out](const FormatItem &item, double value) {
        out.clear();
        return formatReal(out, resolved(item, Role::fmtSource), value, false);
    };
    FormatItem item = realItem();
    item.as.real.exponential = 1;
    item.xFlag = 1;
    item.as.real.exponentDigits = 99;
    setPrecision(item, 999);  // both beyond their caps, 10 and 200
    ASSERT_EQ(format(item, most), 0);
    EXPECT_EQ(std::string(out.data() + out.size() - 12, 12), "E+0000000308");
    EXPECT_EQ(out.size(), 1 + 1 + 1 + 200 + 12u);

    // The longest fixed text, 309 digits, point and 200 decimals, fills the
    // widest field.
    item = realItem();
    setPrecision(item, 200);
    setWidth(item, 511);
    ASSERT_EQ(format(item, most), 0);
    EXPECT_EQ(out.size(), 1 + 309 + 1 + 200u);
    setWidth(item, 4);
    EXPECT_EQ(format(item, 12.5), FMT_ERR_WIDTH_EXCEEDED);
}

TEST(RealFormat, FloatElementsUseTheFloatsShortestDigits)
{
    const FormatItem item = realItem(4);
    ByteBuffer out;
    ASSERT_EQ(formatReal(out, resolved(item, Role::fmtSource), 0.1f, true), 0);
    EXPECT_EQ(std::string(out.data(), out.size()), "0.1");
}

struct ScanCase {
    const char *text;
    bool single;
    int64_t width;
    int32_t result;
    double value;
    size_t consumed;
};

TEST(RealScan, TextsAndTheirValuesOrRefusals)
{
    const ScanCase cases[] = {
        {"1.25", false, 0, 0, 1.25, 4},
        {"  -0.5e3,", false, 0, 0, -500, 8},
        {"+2.", false, 0, 0, 2, 3},
        {"1e-400", false, 0, 0, 0, 6},
        {"0.0000000000000000000000000000000000000000000001e-300", false, 0, 0, 0, 53},
        {"1e400", false, 0, FMT_ERR_FLOAT_OVERFLOW, 0, 0},
        {"-1e39", true, 0, FMT_ERR_FLOAT_OVERFLOW, 0, 0},
        {"3.4e38", true, 0, 0, 3.4e38f, 6},
        {"inf", false, 0, 0, INFINITY, 3},
        {"12.345", false, 4, 0, 12.3, 4},
        {"    1.5", false, 4, FMT_ERR_WIDTH_TOO_SMALL, 0, 0},
        {"x1", false, 0, FMT_ERR_NO_REAL, 0, 0},
        {"--1", false, 0, FMT_ERR_NO_REAL, 0, 0},
        {"-", false, 0, FMT_ERR_NO_REAL, 0, 0},
        {"  ", false, 0, kSourceEnded, 0, 0},
    };
    for (const ScanCase &c : cases) {
        FormatItem item = realItem(c.single ? 4 : 8);
        if (c.width) setWidth(item, c.width);
        ScanText text{c.text, c.text + std::strlen(c.text)};
        double value = -99;
        EXPECT_EQ(scanReal(text, resolved(item, Role::scanTarget), &value, c.single), c.result) << c.text;
        if (c.result != 0) continue;
        EXPECT_EQ(value, c.value) << c.text;
        EXPECT_EQ(static_cast<size_t>(text.at - c.text), c.consumed) << c.text;
    }
}

}  // namespace
}  // namespace tollan::fmtio
