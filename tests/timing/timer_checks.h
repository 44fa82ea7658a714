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

// The count must lie between half the expected periods (a loaded machine
// delays callbacks) and one more than fit (no burst beyond the schedule).
inline bool plausibleCount(int calls, double periods)
{
    return calls >= periods / 2 - 1 && calls <= periods + 1;
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

// Three timers of different periods run side by side, each calling back once
// per period of its own; discarding one silences it and leaves the others
// running.
inline void expectConcurrentTimersKeepTheirOwnPace()
{
    using Clock = std::chrono::steady_clock;
    struct Running {
        uint32_t periodMs;
        Counter counter;
        void *timer = nullptr;
        Clock::time_point start;
        double periods = 0;  // that fit into the time it ran

        void discard()
        {
            EXPECT_EQ(ZORUSTEdiscardtimer(timer), ZORUSTE_SUCCESS);
            periods = std::chrono::duration<double, std::milli>(Clock::now() - start).count() / periodMs;
        }
    };
    Running timers[3] = {{7, {}}, {10, {}}, {16, {}}};
    bool started = true;
    for (Running &running : timers) {
        running.timer = ZORUSTEnewtimer(&Counter::callback, &running.counter);
        const ZORUSTETimeValue period = milliseconds(running.periodMs);
        running.start = Clock::now();
        started = started && ZORUSTEsettimer(running.timer, &period) == 1;
    }
    if (!started) {
        for (Running &running : timers) ZORUSTEdiscardtimer(running.timer);
        FAIL() << "a timer did not start";
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    timers[1].discard();
    const int outerCalls = timers[0].counter.calls.load() + timers[2].counter.calls.load();
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    timers[0].discard();
    timers[2].discard();

    for (Running &running : timers) {
        const int calls = running.counter.calls.load();
        EXPECT_TRUE(plausibleCount(calls, running.periods))
            << calls << " calls of the " << running.periodMs << " ms timer in " << running.periods
            << " periods";
    }
    EXPECT_GT(timers[0].counter.calls.load() + timers[2].counter.calls.load(), outerCalls)
        << "the others stopped with the discarded timer";
    const int discardedCalls = timers[1].counter.calls.load();
    std::this_thread::sleep_for(std::chrono::milliseconds(40));
    EXPECT_EQ(timers[1].counter.calls.load(), discardedCalls);
}

}  // namespace timing_test
