// Thread-local slots and the thread-exit notification.
#include <gtest/gtest.h>

#include <atomic>

#include "platform/thread.h"
#include "platform/tls.h"

using namespace tollan::platform;

namespace {

TlsIndex slotA, slotB;

void storeOwnValues(void *argument)
{
    auto *seen = static_cast<void **>(argument);
    seen[0] = tlsGet(slotA);  // not yet set in this thread
    tlsSet(slotA, seen + 1);
    seen[1] = tlsGet(slotA);
}

}  // namespace

TEST(Tls, EachThreadSeesOnlyItsOwnValues)
{
    ASSERT_TRUE(tlsAlloc(&slotA));
    ASSERT_TRUE(tlsAlloc(&slotB));
    EXPECT_NE(slotA, slotB);
    int mine = 0;
    ASSERT_TRUE(tlsSet(slotA, &mine));
    EXPECT_EQ(tlsGet(slotB), nullptr);

    void *seen[2] = {&mine, nullptr};
    Thread::start(storeOwnValues, seen)->join();
    EXPECT_EQ(seen[0], nullptr);
    EXPECT_EQ(seen[1], static_cast<void *>(seen + 1));
    EXPECT_EQ(tlsGet(slotA), &mine);

    // A freed and reallocated slot does not bring back old values.
    tlsFree(slotA);
    TlsIndex again = 0;
    ASSERT_TRUE(tlsAlloc(&again));
    EXPECT_EQ(tlsGet(again), nullptr);
    tlsFree(again);
    tlsFree(slotB);
}

#ifndef _WIN32
// On Windows the loader's thread-detach notification calls the handler; the
// engine's tests cover that path.
namespace {

TlsIndex exitSlot;
std::atomic<int> handlerRuns{0};
std::atomic<void *> valueSeenAtExit{nullptr};

void countExit()
{
    ++handlerRuns;
    valueSeenAtExit = tlsGet(exitSlot);
}

void armAndStore(void *argument)
{
    tlsSet(exitSlot, argument);
    armThreadExit();
}

void storeOnly(void *argument)
{
    tlsSet(exitSlot, argument);
}

}  // namespace

TEST(ThreadExit, HandlerRunsForArmedThreadsWithTheirSlotsIntact)
{
    ASSERT_TRUE(tlsAlloc(&exitSlot));
    // Many slots, so that the watched one is not the first the system would clear.
    TlsIndex others[40];
    for (TlsIndex &other : others) ASSERT_TRUE(tlsAlloc(&other));
    handlerRuns = 0;
    valueSeenAtExit = nullptr;
    const ThreadExitHandler previous = setThreadExitHandler(countExit);

    int marker = 0;
    Thread::start(storeOnly, &marker)->join();
    EXPECT_EQ(handlerRuns.load(), 0);
    Thread::start(armAndStore, &marker)->join();
    EXPECT_EQ(handlerRuns.load(), 1);
    EXPECT_EQ(valueSeenAtExit.load(), &marker);

    setThreadExitHandler(previous);
    for (TlsIndex other : others) tlsFree(other);
    tlsFree(exitSlot);
}
#endif
