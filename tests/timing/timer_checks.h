// Callbacks and checks shared by the timer-engine tests of both engines.
#pragma once

#include <gtest/gtest.h>

#include <tollan/timerengine.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/thread.h"
#include "timing/scratch.h"

namespace timing_test {

struct Counter {
    std::atomic<int> calls{0};
    static void callback(void *self) { static_cast<Counter *>(self)->calls.fetch_add(1); }
};

inline ZORUSTETimeValue milliseconds(uint32_t ms)
{
    return ZORUSTETimeValue{ms / 1000, ms % 1000 * 1000000};
}

// Lets `timer` run for about `ms` and returns how many periods of `periodMs`
// fit into the time it really ran.
inline double runFor(void *timer, uint32_t periodMs, uint32_t ms)
{
    const ZORUSTETimeValue period = milliseconds(periodMs);
    const auto start = std::chrono::steady_clock::now();
    if (!ZORUSTEsettimer(timer, &period)) return -1;
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
    ZORUSTEdiscardtimer(timer);
    const double ran =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    return ran / periodMs;
}

// The count must lie between half the expected periods (a loaded machine
// delays callbacks) and one more than fit (no burst beyond the schedule).
inline bool plausibleCount(int calls, double periods)
{
    return calls >= periods / 2 - 1 && calls <= periods + 1;
}

// A 10 ms timer run for 300 ms calls `counter` back about once per period.
inline void expectOneCallPerPeriod(Counter &counter)
{
    void *timer = ZORUSTEnewtimer(&Counter::callback, &counter);
    ASSERT_NE(timer, nullptr);
    const double periods = runFor(timer, 10, 300);
    ASSERT_GT(periods, 0);
    EXPECT_TRUE(plausibleCount(counter.calls.load(), periods)) << counter.calls.load() << " in " << periods;
}

struct SelfDiscarding {
    bool giveThreadVariables;
    void *timer = nullptr;
    std::atomic<int> calls{0};
    std::atomic<int32_t> discardResult{1};
    std::atomic<uint32_t> thread{0};
    static void callback(void *context)
    {
        auto *self = static_cast<SelfDiscarding *>(context);
        if (++self->calls != 3) return;
        // The scratch block lives in the thread variables, which the library
        // frees when the thread ends: on POSIX only such a thread detaches.
        if (self->giveThreadVariables) tollan::timing::threadScratch();
        self->thread = tollan::platform::currentThreadId();
        self->discardResult = ZORUSTEdiscardtimer(self->timer);
    }
};

// A timer discarded from its own third callback: the discard succeeds and
// the timer never calls again. Returns the id of the thread that ran the
// callbacks; with giveThreadVariables that thread runs the library's thread
// detach when it ends. (Not for a thread that outlives the test: a detach
// that runs while the process shuts down races with the shutdown.)
inline uint32_t expectDiscardFromOwnCallback(bool giveThreadVariables = false)
{
    SelfDiscarding self{giveThreadVariables};
    self.timer = ZORUSTEnewtimer(&SelfDiscarding::callback, &self);
    EXPECT_NE(self.timer, nullptr);
    const ZORUSTETimeValue period = milliseconds(5);
    EXPECT_EQ(ZORUSTEsettimer(self.timer, &period), 1);
    for (int i = 0; i < 200 && self.calls.load() < 3; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(self.calls.load(), 3);
    EXPECT_EQ(self.discardResult.load(), ZORUSTE_SUCCESS);
    EXPECT_EQ(ZORUSTEdiscardtimer(self.timer), ZORUSTE_ERR_INVALID_TIMER);
    return self.thread.load();
}

}  // namespace timing_test
