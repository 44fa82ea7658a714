// Process-local events: reset modes, time-outs and waking across threads.
#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "fixtures/stopwatch.h"
#include "platform/event.h"
#include "platform/thread.h"

using namespace tollan::platform;

namespace {

struct Waiter {
    Event *event;
    uint32_t timeoutMs;
    std::atomic<int> released{0};
};

void waitOnce(void *argument)
{
    auto *waiter = static_cast<Waiter *>(argument);
    if (waiter->event->wait(waiter->timeoutMs) == WaitResult::signalled) ++waiter->released;
}

// Starts `count` threads that each wait once on the waiter's event, and gives
// them time to block.
std::vector<std::unique_ptr<Thread>> startWaiters(Waiter *waiter, int count)
{
    std::vector<std::unique_ptr<Thread>> threads;
    for (int i = 0; i < count; ++i) threads.push_back(Thread::start(waitOnce, waiter));
    sleepMs(100);
    return threads;
}

}  // namespace

TEST(Event, AutoResetReleasesOneWaitManualResetStaysSet)
{
    auto event = Event::create(false, true, nullptr);
    ASSERT_TRUE(event);
    EXPECT_EQ(event->wait(0), WaitResult::signalled);
    EXPECT_EQ(event->wait(0), WaitResult::timedOut);
    event->set();
    event->set();  // a second set while set does not count twice
    EXPECT_EQ(event->wait(0), WaitResult::signalled);
    EXPECT_EQ(event->wait(0), WaitResult::timedOut);

    auto manual = Event::create(true, false, nullptr);  // stays set until reset
    ASSERT_TRUE(manual);
    EXPECT_EQ(manual->wait(0), WaitResult::timedOut);
    manual->set();
    EXPECT_EQ(manual->wait(0), WaitResult::signalled);
    EXPECT_EQ(manual->wait(10), WaitResult::signalled);
    manual->reset();
    EXPECT_EQ(manual->wait(0), WaitResult::timedOut);
}

TEST(Event, TimedWaitLastsAboutItsTimeout)
{
    auto event = Event::create(false, false, nullptr);
    ASSERT_TRUE(event);
    const tollan::testing::Stopwatch stopwatch;
    EXPECT_EQ(event->wait(80), WaitResult::timedOut);
    const int64_t elapsed = stopwatch.elapsedMs();
    EXPECT_GE(elapsed, 75);  // Windows may wake a little early
    EXPECT_LT(elapsed, 2000);
}

TEST(Event, EachAutoResetSetReleasesExactlyOneWaiter)
{
    auto event = Event::create(false, false, nullptr);
    ASSERT_TRUE(event);
    Waiter waiter{event.get(), 3000};
    auto threads = startWaiters(&waiter, 3);
    event->set();
    event->set();  // two waiters go, even though neither has run yet
    sleepMs(200);
    EXPECT_EQ(waiter.released.load(), 2);
    EXPECT_EQ(event->wait(0), WaitResult::timedOut) << "a set that released a waiter leaves the event reset";
    event->set();
    for (auto &thread : threads) thread->join();
    EXPECT_EQ(waiter.released.load(), 3);
}

TEST(Event, ManualSetReleasesAllWaitersEvenWhenResetAtOnce)
{
    auto event = Event::create(true, false, nullptr);
    ASSERT_TRUE(event);
    Waiter waiter{event.get(), 3000};
    auto threads = startWaiters(&waiter, 3);
    event->set();
    event->reset();
    for (auto &thread : threads) thread->join();
    EXPECT_EQ(waiter.released.load(), 3);
}

TEST(Event, WaitForeverIsWokenFromAnotherThread)
{
    auto event = Event::create(false, false, nullptr);
    ASSERT_TRUE(event);
    Waiter waiter{event.get(), kWaitForever};
    auto threads = startWaiters(&waiter, 1);
    EXPECT_EQ(waiter.released.load(), 0);
    event->set();
    threads[0]->join();
    EXPECT_EQ(waiter.released.load(), 1);
}
