// Callbacks and checks shared by the timer-engine tests of both engines.
#pragma once

#include <gtest/gtest.h>

#include <tollan/timerengine.h>

#include <atomic>
#include <chrono>
#include <thread>

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
    void *timer = nullptr;
    std::atomic<int> calls{0};
    std::atomic<int32_t> discardResult{1};
    static void callback(void *context)
    {
        auto *self = static_cast<SelfDiscarding *>(context);
        if (++self->calls == 3) self->discardResult = ZORUSTEdiscardtimer(self->timer);
    }
};

// A timer discarded from its own third callback: the discard succeeds and
// the timer never calls again.
inline void expectDiscardFromOwnCallback()
{
    SelfDiscarding self;
    self.timer = ZORUSTEnewtimer(&SelfDiscarding::callback, &self);
    ASSERT_NE(self.timer, nullptr);
    const ZORUSTETimeValue period = milliseconds(5);
    ASSERT_EQ(ZORUSTEsettimer(self.timer, &period), 1);
    for (int i = 0; i < 200 && self.calls.load() < 3; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(self.calls.load(), 3);
    EXPECT_EQ(self.discardResult.load(), ZORUSTE_SUCCESS);
    EXPECT_EQ(ZORUSTEdiscardtimer(self.timer), ZORUSTE_ERR_INVALID_TIMER);
}

}  // namespace timing_test
