#include <gtest/gtest.h>

#include <tollan/utility.h>

#include <cmath>
#include <cstdint>
#include <limits>

TEST(RoundRealToNearestInteger, HalvesGoToTheEvenNeighbour)
{
    struct Case {
        double x;
        int32_t rounded;
    };
    for (const Case &c : {Case{2.5, 2}, Case{3.5, 4}, Case{-2.5, -2}, Case{-3.5, -4}, Case{0.5, 0},
                          Case{-0.5, 0}, Case{1.5, 2}, Case{-1.5, -2}, Case{2.4, 2}, Case{2.6, 3},
                          Case{-2.4, -2}, Case{-2.6, -3}, Case{0.0, 0}, Case{-0.0, 0}})
        EXPECT_EQ(RoundRealToNearestInteger(c.x), c.rounded) << c.x;
}

TEST(RoundRealToNearestInteger, OutOfRangeGivesTheSmallestInteger)
{
    EXPECT_EQ(RoundRealToNearestInteger(2147483647.0), INT32_MAX);
    EXPECT_EQ(RoundRealToNearestInteger(-2147483648.0), INT32_MIN);
    EXPECT_EQ(RoundRealToNearestInteger(-2147483647.5), -2147483648);  // even neighbour, in range
    EXPECT_EQ(RoundRealToNearestInteger(2147483648.0), INT32_MIN);
    EXPECT_EQ(RoundRealToNearestInteger(-2147483649.0), INT32_MIN);
    EXPECT_EQ(RoundRealToNearestInteger(1e300), INT32_MIN);
    EXPECT_EQ(RoundRealToNearestInteger(std::numeric_limits<double>::infinity()), INT32_MIN);
    EXPECT_EQ(RoundRealToNearestInteger(std::nan("")), INT32_MIN);
}

TEST(TruncateRealNumber, DropsTheFractionTowardZero)
{
    EXPECT_EQ(TruncateRealNumber(2.7), 2.0);
    EXPECT_EQ(TruncateRealNumber(-2.7), -2.0);
    EXPECT_EQ(TruncateRealNumber(-0.3), 0.0);
    EXPECT_EQ(TruncateRealNumber(5.0), 5.0);
    EXPECT_EQ(TruncateRealNumber(1e20 + 0.5), 1e20);
    EXPECT_TRUE(std::isnan(TruncateRealNumber(std::nan(""))));
}

TEST(RealTimeTargetFunctions, DoNothingHere)
{
    EXPECT_EQ(GetTimeUS(), 0u);
    EXPECT_EQ(SleepUS(1000000), 0);
    EXPECT_EQ(SleepUntilUS(UINT64_MAX), 0);
    EXPECT_EQ(SleepUntilNextMultipleUS(1000), 0);
}
