// Timing handles and timing events, on a clock the tests set.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include <tollan/logger.h>

#include "fixtures/log_capture.h"
#include "logger/timing.h"

using tollan::logger::kLargestTimingHandle;
using tollan::logger::nextTimingHandle;
using tollan::testing::LogCapture;

namespace {

int64_t fakeNow = 0;

int64_t fakeClock() noexcept
{
    return fakeNow;
}

class LoggerTiming : public ::testing::Test {
protected:
    void SetUp() override
    {
        fakeNow = 1000000;
        previous_ = tollan::logger::setMicrosecondClock(fakeClock);
    }
    void TearDown() override { tollan::logger::setMicrosecondClock(previous_); }

    tollan::logger::MicrosecondClock previous_ = nullptr;
    LogCapture capture_{0xFFFFFFFFu, "[MSG]"};
};

std::string elapsedText(int64_t microseconds)
{
    char text[64];
    tollan::logger::formatElapsed(microseconds, text, sizeof text);
    return text;
}

}  // namespace

TEST(LoggerElapsed, ThreeDecimalsBelow100MillisecondsTwoFromThere)
{
    EXPECT_EQ(elapsedText(0), "0.000 ms");
    EXPECT_EQ(elapsedText(99999), "99.999 ms");
    EXPECT_EQ(elapsedText(100000), "100.00 ms");
    EXPECT_EQ(elapsedText(1234567), "1234.57 ms");
    EXPECT_EQ(elapsedText(-1500), "-1.50 ms");
}

TEST(LoggerTimingHandles, NumberingSkipsZeroAndHandlesInUseAndWraps)
{
    std::set<uint32_t> inUse{kLargestTimingHandle, 1, 2, 4};
    auto used = [&](uint32_t h) { return inUse.count(h) != 0; };
    EXPECT_EQ(nextTimingHandle(0, [](uint32_t) { return false; }), 1u);
    EXPECT_EQ(nextTimingHandle(kLargestTimingHandle - 1, used), 3u);
    EXPECT_EQ(nextTimingHandle(3, used), 5u);
}

TEST_F(LoggerTiming, ElapsedOfExactly100MillisecondsHasTwoDecimalsAndOnlyTheFirstIsReplaced)
{
    SetZORLogOutputFormat("[LEVEL] [FUNC] [MSG]");
    uint32_t handle = GetZORLogTimingHandle();
    fakeNow += 100000;
    testing::internal::CaptureStdout();
    WriteZORLogTimingEvent(handle, 1, 0, 0, 1, "t.c", "Sweep", 3, "sweep %d took [ELAPSED] ([ELAPSED])", 4);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "sweep 4 took 100.00 ms ([ELAPSED])\n");
    EXPECT_EQ(capture_.text(), "TIMING Sweep sweep 4 took 100.00 ms ([ELAPSED])\n");
}

TEST_F(LoggerTiming, UpdateRestartsTheClockAndReleaseForgetsTheHandle)
{
    uint32_t handle = GetZORLogTimingHandle();
    fakeNow += 2500;
    WriteZORLogTimingEvent(handle, 0, 1, 0, 0, "f", "g", 1, "a [ELAPSED]");
    fakeNow += 500;
    WriteZORLogTimingEvent(handle, 0, 0, 0, 0, "f", "g", 1, "b [ELAPSED]");
    fakeNow += 500;
    UpdateZORLogTimingHandle(handle);
    fakeNow += 250;
    WriteZORLogTimingEvent(handle, 1, 1, 0, 0, "f", "g", 1, "c [ELAPSED]");
    WriteZORLogTimingEvent(handle, 0, 0, 0, 0, "f", "g", 1, "after release");
    EXPECT_EQ(capture_.text(), "a 2.500 ms\nb 0.500 ms\nc 0.250 ms\n");
}

TEST_F(LoggerTiming, ReleasedAndUnknownHandlesWriteNothing)
{
    uint32_t handle = GetZORLogTimingHandle();
    ReleaseZORLogTimingHandle(handle);
    WriteZORLogTimingEvent(handle, 0, 0, 0, 0, "f", "g", 1, "released");
    WriteZORLogTimingEvent(0, 0, 0, 0, 0, "f", "g", 1, "never given");
    EXPECT_NE(GetZORLogTimingHandle(), handle);
    EXPECT_EQ(capture_.text(), "");
}
