// When the program stops, its timers still alive are discarded on both
// engines, without waiting for the external engine's threads.
#include <gtest/gtest.h>

#include <tollan/engine.h>
#include <tollan/timerengine.h>

#include <chrono>
#include <thread>

#include "timer_checks.h"
#include "timing/engines.h"
#include "timing/library.h"

using namespace tollan;
using namespace timing_test;

TEST(RunStateStop, DiscardsTheTimersStillAlive)
{
    ASSERT_EQ(ZORUSTEinitialize(), 1);
    timing::ZORUSTE *multimedia = timing::chosenEngine();
    ASSERT_TRUE(timing::qwusteEngine().startUp());
    const ZORUSTETimeValue period = milliseconds(2);

    Counter onMultimedia, onExternal;
    void *multimediaTimer = ZORUSTEnewtimer(&Counter::callback, &onMultimedia);
    ASSERT_EQ(ZORUSTEsettimer(multimediaTimer, &period), 1);
    timing::setChosenEngineForTesting(&timing::qwusteEngine());
    void *externalTimer = ZORUSTEnewtimer(&Counter::callback, &onExternal);
    timing::setChosenEngineForTesting(multimedia);
    ASSERT_EQ(ZORUSTEsettimer(externalTimer, &period), 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));

    CloseZORRTDll(nullptr);  // the library's own run-state callbacks hear the stop
    EXPECT_TRUE(timing::RegisterUtilityLibraryRunStateChangeCallback());

    EXPECT_EQ(ZORUSTEdiscardtimer(multimediaTimer), ZORUSTE_ERR_INVALID_TIMER);
    EXPECT_EQ(ZORUSTEdiscardtimer(externalTimer), ZORUSTE_ERR_INVALID_TIMER);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));  // a delivery under way ends
    const int multimediaCalls = onMultimedia.calls.load();
    const int externalCalls = onExternal.calls.load();
    EXPECT_GT(multimediaCalls, 0);
    EXPECT_GT(externalCalls, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_EQ(onMultimedia.calls.load(), multimediaCalls);
    EXPECT_EQ(onExternal.calls.load(), externalCalls);
}
