// The thread that ends blocked serial writes at their deadlines: it sleeps to
// the earliest one, so a deadline armed earlier than that must wake it.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/posix/write_deadlines.h"

namespace {

using namespace tollan::platform::posix;
using Clock = std::chrono::steady_clock;

class CountingDevice final : public WriteDeadline {
public:
    CountingDevice() { EXPECT_TRUE(watchWriteDeadlines(this)); }
    ~CountingDevice() { unwatchWriteDeadlines(this); }
    CountingDevice(const CountingDevice &) = delete;
    CountingDevice &operator=(const CountingDevice &) = delete;

    void deadlinePassed() noexcept override { ++passed; }

    // Waits up to `limit` for the first call; how long it took.
    Clock::duration waitForPassed(std::chrono::milliseconds limit) const
    {
        const Clock::time_point start = Clock::now();
        while (passed.load() == 0 && Clock::now() - start < limit)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return Clock::now() - start;
    }

    std::atomic<int> passed{0};
};

}  // namespace

TEST(WriteDeadlines, AnEarlierDeadlineWakesAWatcherSleepingToALaterOne)
{
    CountingDevice slow;
    CountingDevice fast;
    ASSERT_TRUE(armWriteDeadline(&slow, 60000));
    // Let the watcher go to sleep until the minute is up.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_TRUE(armWriteDeadline(&fast, 30));
    const Clock::duration took = fast.waitForPassed(std::chrono::seconds(10));
    EXPECT_EQ(fast.passed.load(), 1);
    EXPECT_GE(took, std::chrono::milliseconds(20));
    EXPECT_EQ(slow.passed.load(), 0);
    EXPECT_EQ(fast.dueNs.load(), 0);  // a passed deadline is disarmed
}

TEST(WriteDeadlines, ADisarmedOrUnwatchedDeviceIsNeverCalled)
{
    CountingDevice disarmed;
    ASSERT_TRUE(armWriteDeadline(&disarmed, 20));
    disarmed.dueNs.store(0);  // the write finished in time
    {
        CountingDevice gone;
        ASSERT_TRUE(armWriteDeadline(&gone, 20));
    }
    // A later deadline rearmed while the first is pending: called once, for it.
    CountingDevice rearmed;
    ASSERT_TRUE(armWriteDeadline(&rearmed, 20));
    ASSERT_TRUE(armWriteDeadline(&rearmed, 60));
    rearmed.waitForPassed(std::chrono::seconds(10));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(rearmed.passed.load(), 1);
    EXPECT_EQ(disarmed.passed.load(), 0);
}
