// The process clock: its start, its order across threads, the waits built on
// it and the choice of its time source.
#include <gtest/gtest.h>

#include <tollan/logger.h>
#include <tollan/utility.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <regex>
#include <thread>
#include <vector>

#include "services/lifecycle.h"
#include "fixtures/log_capture.h"
#include "fixtures/settings_writer.h"
#include "platform/clock.h"
#include "timing/library.h"
#include "timing/milliseconds.h"
#include "timing/time_source.h"
#include "timing/timer_clock.h"

using namespace tollan;
using timing::TimeSource;

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void storeUseDefaultTimer(uint32_t value)
{
    ASSERT_EQ(tollan::testing::storeDword("Software\\Vantrel\\ZOR\\17.0", "useDefaultTimer", value), 0);
}

// Each test that changes the time source gets the usual one back.
class TimeSourceChoice : public ::testing::Test {
protected:
    void TearDown() override
    {
        storeUseDefaultTimer(0);
        services::lifecycle().platformDetected = true;
        timing::SetupPCTimer();
        EXPECT_EQ(timing::timeSource(), TimeSource::performanceCounter);
        EXPECT_DOUBLE_EQ(timing::waitResolution(), 0.001);
    }
};

}  // namespace

TEST(Timer, StartsAtZeroAndNeverGoesBackAcrossThreads)
{
    timing::SetupPCTimer();  // makes the next reading the first one
    const double first = Timer();
    EXPECT_GE(first, 0.0);
    EXPECT_LT(first, 0.001);

    // Every reading is at least as late as any reading published before it.
    std::atomic<double> latestPublished{0.0};
    std::atomic<int> backwards{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            double previous = 0.0;
            for (int i = 0; i < 20000; ++i) {
                const double published = latestPublished.load();
                const double now = Timer();
                if (now < published || now < previous) ++backwards;
                previous = now;
                double expected = published;
                while (now > expected && !latestPublished.compare_exchange_weak(expected, now)) {
                }
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(backwards.load(), 0);
}

TEST(Delay, NothingToWaitForReturnsAtOnce)
{
    const Clock::time_point start = Clock::now();
    Delay(0);
    Delay(-1);
    Delay(std::nan(""));
    SyncWait(Timer(), 0);
    SyncWait(Timer(), -5);
    SyncWait(Timer() - 10.0, 1.0);  // deadline long past
    SyncWait(-INFINITY, 1.0);
    SyncWait(std::nan(""), 1.0);
    SyncWait(Timer(), std::nan(""));
    EXPECT_LT(secondsSince(start), 0.02);
}

TEST(Delay, LongWaitsSleepInSlicesThatFitTheirType)
{
    using tollan::timing::kLongestSleepMs;
    using tollan::timing::sleepSliceMs;
    EXPECT_EQ(sleepSliceMs(0.05), 0u);  // the last tenth of a second is polled
    EXPECT_EQ(sleepSliceMs(std::nan("")), 0u);
    EXPECT_EQ(sleepSliceMs(0.3), 150u);
    EXPECT_EQ(sleepSliceMs(86400.0), 43200000u);
    // Past about 100 days half the wait no longer fits 32 bits of milliseconds.
    for (double seconds : {2 * 86400.0, 1e7, 1e300, static_cast<double>(INFINITY)})
        EXPECT_EQ(sleepSliceMs(seconds), kLongestSleepMs) << seconds;
}

TEST(Delay, NeverReturnsEarly)
{
    for (double seconds : {0.001, 0.01, 0.05, 0.1, 0.3}) {
        const Clock::time_point start = Clock::now();
        Delay(seconds);
        const double waited = secondsSince(start);
        EXPECT_GE(waited, seconds) << "Delay(" << seconds << ")";
        EXPECT_LT(waited, seconds + 0.25) << "Delay(" << seconds << ")";
    }
}

TEST(Delay, SyncWaitKeepsASteadyPeriod)
{
    const Clock::time_point start = Clock::now();
    double deadline = Timer();
    for (int i = 0; i < 5; ++i) {
        SyncWait(deadline, 0.01);
        deadline += 0.01;
    }
    // Each wait ends a resolution after its deadline; the period does not drift by more.
    EXPECT_GE(secondsSince(start), 0.05);
    EXPECT_LT(secondsSince(start), 0.05 + 0.1);
}

TEST(MillisecondClock, CountsElapsedMilliseconds)
{
    const uint32_t start = timing::millisecondClock();
    Delay(0.02);
    const uint32_t elapsed = timing::millisecondsSince(start);
    EXPECT_GE(elapsed, 20u);
    EXPECT_LT(elapsed, 500u);
}

TEST(TickScaling, WrapsIn32Bits)
{
    EXPECT_EQ(timing::scaleTick(0), 0u);
    EXPECT_EQ(timing::scaleTick(1), 1000000u);
    EXPECT_EQ(timing::scaleTick(4294), 4294000000u);
    EXPECT_EQ(timing::scaleTick(4295), 32704u);              // 4,295,000,000 - 2^32
    EXPECT_EQ(timing::scaleTick(0xFFFFFFFFu), 4293967296u);  // -1,000,000 mod 2^32
}

TEST_F(TimeSourceChoice, UseDefaultTimerSelectsTheTickCount)
{
    storeUseDefaultTimer(1);
    timing::SetupPCTimer();
    EXPECT_EQ(timing::timeSource(), TimeSource::tickCount);
    EXPECT_EQ(timing::raisedPeriodMs(), 0u);
    const uint32_t before = platform::tickCountMs();
    const uint64_t raw = timing::rawReading();
    const uint32_t after = platform::tickCountMs();
    EXPECT_TRUE(raw == timing::scaleTick(before) || raw == timing::scaleTick(after)) << raw;
    EXPECT_DOUBLE_EQ(timing::waitResolution(), 0.055);
}

TEST_F(TimeSourceChoice, WithoutTheSystemVersionTheMultimediaTimerIsRaised)
{
    tollan::testing::LogCapture log(ZOR_LOG_INFO | ZOR_LOG_ERROR);
    services::lifecycle().platformDetected = false;
    timing::SetupPCTimer();
    EXPECT_EQ(timing::timeSource(), TimeSource::multimediaTimer);
    EXPECT_EQ(timing::raisedPeriodMs(), 55u);
    EXPECT_DOUBLE_EQ(timing::waitResolution(), 0.001);
    EXPECT_EQ(log.count("ERROR|"), 0u) << log.text();
    const std::regex capsLine("INFO\\|Mgsource/Device\\|SetupPCTimer\\|timer min=\\d+ msec, max=\\d+ msec");
    EXPECT_TRUE(std::regex_search(log.text(), capsLine)) << log.text();

    timing::RestorePCTimer();
    EXPECT_EQ(timing::raisedPeriodMs(), 0u);
}
