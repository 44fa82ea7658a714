// Threads: identity, joining and priorities.
#include <gtest/gtest.h>

#include <atomic>

#include "platform/thread.h"

using namespace tollan::platform;

namespace {

void recordId(void *argument)
{
    *static_cast<uint32_t *>(argument) = currentThreadId();
}

void sleepThenFlag(void *argument)
{
    sleepMs(50);
    static_cast<std::atomic<bool> *>(argument)->store(true);
}

}  // namespace

TEST(Thread, IdIsKnownAtOnceAndMatchesTheThreadsOwnView)
{
    uint32_t seenInside = 0;
    auto thread = Thread::start(recordId, &seenInside);
    ASSERT_TRUE(thread);
    const uint32_t id = thread->id();
    EXPECT_NE(id, 0u);
    thread->join();
    EXPECT_EQ(id, seenInside);
    EXPECT_NE(id, currentThreadId());
    EXPECT_NE(currentProcessId(), 0u);
}

TEST(Thread, DestroyingAThreadWaitsForIt)
{
    std::atomic<bool> finished{false};
    Thread::start(sleepThenFlag, &finished).reset();
    EXPECT_TRUE(finished.load());
}

TEST(Thread, PriorityKeepsItsValueWhenRefused)
{
    std::atomic<bool> finished{false};
    auto thread = Thread::start(sleepThenFlag, &finished);
    ASSERT_TRUE(thread);
    EXPECT_EQ(thread->priority(), kThreadPriorityNormal);
    EXPECT_FALSE(thread->setPriority(7)) << "not a priority of the scale";
    if (thread->setPriority(kThreadPriorityHighest)) {
        EXPECT_EQ(thread->priority(), kThreadPriorityHighest);
    } else {
        EXPECT_EQ(thread->priority(), kThreadPriorityNormal);
    }
}
