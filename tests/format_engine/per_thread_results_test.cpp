// NumFmtdBytes, NumScanItems and NumScanBytes belong to the calling thread.
#include <gtest/gtest.h>

#include <thread>

#include <tollan/fmtio.h>

namespace {

TEST(PerThreadResults, AnotherThreadsCallsLeaveThisThreadsCountsAlone)
{
    char out[32];
    int32_t a = 0, b = 0;
    ASSERT_EQ(Fmt(out, "%s<%d", 12345), 1);
    ASSERT_EQ(Scan("1 2", "%s>%d%d", &a, &b), 2);
    std::thread other([] {
        char text[32];
        int32_t n = 0;
        for (int k = 0; k < 1000; ++k) {
            EXPECT_EQ(Fmt(text, "%s<%d[w20]", k), 1);
            EXPECT_EQ(NumFmtdBytes(), 20);
            EXPECT_EQ(Scan("   7", "%s>%d", &n), 1);
            EXPECT_EQ(NumScanBytes(), 4);
        }
    });
    other.join();
    EXPECT_EQ(NumFmtdBytes(), 5);
    EXPECT_EQ(NumScanItems(), 2);
    EXPECT_EQ(NumScanBytes(), 3);
}

}  // namespace
