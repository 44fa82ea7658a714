// Timing handles and timing events, on a clock the tests set.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include <tollan/logger.h>

#include "fixtures/log_capture.h"
#include "logger/timing.h"

using tollan::logger::formatElapsed;
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
};

std::string elapsedText(int64_t microseconds)
{
    char text[64];
    formatElapsed(microseconds, text, sizeof text);
    return text;
}

}  // namespace

TEST(LoggerElapsed, ThreeDecimalsBelow100MillisecondsTwoFromThere)
{
    EXPECT_EQ(elapsedText(0), "0.000 ms");
    EXPECT_EQ(elapsedText(1), "0.001 ms");
    EXPECT_EQ(elapsedText(99999), "99.999 ms");
    EXPECT_EQ(elapsedText(100000), "100.00 ms");
    EXPECT_EQ(elapsedText(1234567), "1234.57 ms");
    EXPECT_EQ(elapsedText(-1500), "-1.50 ms");
}

TEST(LoggerTimingHandles, NumberingSkipsZeroAndHandlesInUseAndWraps)
{
    auto none = [](uint32_t) { return false; };
    EXPECT_EQ(nextTimingHandle(0, none), 1u);
    EXPECT_EQ(nextTimingHandle(41, none), 42u);
    EXPECT_EQ(nextTimingHandle(kLargestTimingHandle, none), 1u);

    std::set<uint32_t> inUse{kLargestTimingHandle, 1, 2, 4};
    auto used = [&](uint32_t h) { return inUse.count(h) != 0; };
    EXPECT_EQ(nextTimingHandle(kLargestTimingHandle - 1, used), 3u);
    EXPECT_EQ(nextTimingHandle(3, used), 5u);
}

TEST(LoggerTimingHandles, ReleasedNumbersAreNotReusedUntilTheCountGoesRound)
{
    tollan::logger::TimingHandles handles;
    uint32_t first = handles.take(0);
    uint32_t second = handles.take(0);
    handles.release(first);
    EXPECT_EQ(handles.take(0), second + 1);
    int64_t start = 0;
    EXPECT_FALSE(handles.startOf(first, &start));
}

TEST_F(LoggerTiming, ElapsedOfExactly100MillisecondsHasTwoDecimals)
{
    LogCapture capture(0xFFFFFFFFu, "[LEVEL] [FUNC] [MSG]");
    uint32_t handle = GetZORLogTimingHandle();
    ASSERT_NE(handle, 0u);
    fakeNow += 100000;
    WriteZORLogTimingEvent(handle, 1, 0, 0, 0, "t.c", "Sweep", 3, "sweep %d took [ELAPSED] ([ELAPSED])", 4);
    EXPECT_EQ(capture.text(), "TIMING Sweep sweep 4 took 100.00 ms ([ELAPSED])\n");
}

TEST_F(LoggerTiming, UpdateRestartsTheClockAndReleaseForgetsTheHandle)
{
    LogCapture capture(0xFFFFFFFFu, "[MSG]");
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
    EXPECT_EQ(capture.text(), "a 2.500 ms\nb 0.500 ms\nc 0.250 ms\n");
}

TEST_F(LoggerTiming, ReleasedAndUnknownHandlesWriteNothing)
{
    LogCapture capture(0xFFFFFFFFu, "[MSG]");
    uint32_t handle = GetZORLogTimingHandle();
    ReleaseZORLogTimingHandle(handle);
    WriteZORLogTimingEvent(handle, 0, 0, 0, 0, "f", "g", 1, "released");
    WriteZORLogTimingEvent(0, 0, 0, 0, 0, "f", "g", 1, "never given");
    EXPECT_EQ(capture.text(), "");
}

TEST_F(LoggerTiming, EchoShowsTheElapsedTimeToo)
{
    LogCapture capture(0xFFFFFFFFu, "[MSG]");
    uint32_t handle = GetZORLogTimingHandle();
    fakeNow += 1000;
    testing::internal::CaptureStdout();
    WriteZORLogTimingEvent(handle, 1, 0, 0, 1, "f", "g", 1, "took [ELAPSED]");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "took 1.000 ms\n");
}
