// The timer engine on the external timing engine: the test engine library
// built beside this program is loaded for real, and made the chosen engine
// for these tests (the multimedia timer would win otherwise).
#include <gtest/gtest.h>

#include <tollan/timerengine.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <tollan/logger.h>

#include "fixtures/log_capture.h"
#include "platform/dynamic_library.h"
#include "timer_checks.h"
#include "timing/engines.h"
#include "timing/qwuste_engine.h"

using namespace tollan;
using namespace timing_test;
using tollan::testing::LogCapture;

namespace {

class ExternalEngine : public ::testing::Test {
protected:
    void SetUp() override
    {
        previous_ = timing::chosenEngine();
        ASSERT_TRUE(timing::qwusteEngine().startUp()) << "the test engine library is missing";
        timing::setChosenEngineForTesting(&timing::qwusteEngine());
    }
    void TearDown() override { timing::setChosenEngineForTesting(previous_); }

private:
    timing::ZORUSTE *previous_ = nullptr;
};

}  // namespace

TEST_F(ExternalEngine, ClockAndResolutionComeFromTheEngine)
{
    auto *engine = static_cast<timing::QwusteEngine *>(timing::qwusteEngine().engineObject());
    ASSERT_NE(engine, nullptr);
    ZORUSTETimeValue resolution{};
    ASSERT_EQ(ZORUSTEresolution(&resolution), ZORUSTE_SUCCESS);
    EXPECT_EQ(resolution.seconds, 0u);
    EXPECT_EQ(resolution.nanoseconds, 1000u);  // 1 / 10^6 ticks

    ZORUSTETimeValue now{};
    const int64_t before = engine->currentTimeNs();
    ASSERT_EQ(ZORUSTElocaltime(&now), ZORUSTE_SUCCESS);
    const int64_t after = engine->currentTimeNs();
    const int64_t reported = int64_t{now.seconds} * 1000000000 + now.nanoseconds;
    EXPECT_GE(reported, before);
    EXPECT_LE(reported, after);
    EXPECT_LT(now.nanoseconds, 1000000000u);
}

TEST_F(ExternalEngine, NoCallbackRunsAfterDiscardReturns)
{
    struct Watched {
        std::atomic<int> calls{0};
        std::atomic<bool> inside{false};
        static void callback(void *context)
        {
            auto *self = static_cast<Watched *>(context);
            self->inside = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            ++self->calls;
            self->inside = false;
        }
    } watched;
    void *timer = ZORUSTEnewtimer(&Watched::callback, &watched);
    ASSERT_NE(timer, nullptr);
    const ZORUSTETimeValue period = milliseconds(1);
    ASSERT_EQ(ZORUSTEsettimer(timer, &period), 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    ASSERT_EQ(ZORUSTEdiscardtimer(timer), ZORUSTE_SUCCESS);
    EXPECT_FALSE(watched.inside.load());
    const int calls = watched.calls.load();
    EXPECT_GT(calls, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_EQ(watched.calls.load(), calls);
}

TEST_F(ExternalEngine, DiscardFromTheTimersOwnCallbackEndsItsThread)
{
    // The thread frees the timer and leaves; the library sees it detach.
    LogCapture detaches(ZOR_LOG_DLLMAIN, "[THREAD]|[MSG]");
    const uint32_t thread = expectDiscardFromOwnCallback(true);
    ASSERT_NE(thread, 0u);
    const std::string id = std::to_string(static_cast<int>(thread));
    // Waits for the detach's last line: the capture's end takes the logger
    // lock after the thread's last use of it, so that the detach is over
    // before the program's own shutdown can begin.
    const auto detached = [&] {
        const std::vector<std::string> lines = detaches.lines();
        return std::count(lines.begin(), lines.end(), id + "|DLL_THREAD_DETACH: thread " + id) == 1 &&
               std::count(lines.begin(), lines.end(), id + "|Returning 1") == 1;
    };
    for (int i = 0; i < 500 && !detached(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_TRUE(detached()) << "the timer's thread is still running";
}

TEST_F(ExternalEngine, ConcurrentTimersKeepTheirOwnPace)
{
    expectConcurrentTimersKeepTheirOwnPace();
}

namespace {

// The test engine's clock, held while this object lives: it stands still
// until the test moves it on (see the engine library).
class HeldClock {
public:
    HeldClock()
        : library_(platform::loadLibrary("qwuste.dll")),
          hold_(entry<void (*)(int64_t)>("QwusteTestHoldClock")),
          move_(entry<void (*)(int64_t)>("QwusteTestMoveClock")),
          release_(entry<void (*)()>("QwusteTestReleaseClock")),
          waitsBegun_(entry<int64_t (*)()>("QwusteTestWaitsBegun"))
    {
        if (!ready()) return;
        waitsBefore_ = waitsBegun_();
        auto *engine = static_cast<timing::QwusteEngine *>(timing::qwusteEngine().engineObject());
        hold_(engine->currentTimeNs());
    }
    ~HeldClock()
    {
        release();
        if (library_) platform::unloadLibrary(library_);
    }
    HeldClock(const HeldClock &) = delete;
    HeldClock &operator=(const HeldClock &) = delete;

    bool ready() const { return hold_ && move_ && release_ && waitsBegun_; }
    void move(uint32_t ms) { move_(int64_t{ms} * 1000000); }
    void release()
    {
        if (release_) release_();
    }
    // Waits, in real time and generously, until `count` waits have begun on
    // the held clock: the timer's thread has made every call due before and
    // sleeps toward its next due time.
    bool awaitWaits(int64_t count)
    {
        for (int i = 0; i < 1000 && waitsBegun_() - waitsBefore_ < count; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return waitsBegun_() - waitsBefore_ >= count;
    }

private:
    template <typename Function>
    Function entry(const char *name)
    {
        return library_ ? reinterpret_cast<Function>(platform::librarySymbol(library_, name)) : nullptr;
    }

    void *library_;
    void (*hold_)(int64_t);
    void (*move_)(int64_t);
    void (*release_)();
    int64_t (*waitsBegun_)();
    int64_t waitsBefore_ = 0;
};

// A callback whose first call takes `firstCallMs` of the held clock.
struct Overrunning {
    HeldClock *clock;
    uint32_t firstCallMs;
    std::atomic<int> calls{0};
    static void callback(void *context)
    {
        auto *self = static_cast<Overrunning *>(context);
        if (++self->calls == 1) self->clock->move(self->firstCallMs);
    }
};

}  // namespace

TEST_F(ExternalEngine, AnOverrunningCallbackIsRunAgainForEachPeriodItUsedUp)
{
    HeldClock clock;
    ASSERT_TRUE(clock.ready()) << "the test engine cannot hold its clock";
    Overrunning overrun{&clock, 55};
    void *timer = ZORUSTEnewtimer(&Overrunning::callback, &overrun);
    ASSERT_NE(timer, nullptr);
    // Discarding waits for the thread, which waits for the clock.
    struct Discard {
        HeldClock &clock;
        void *timer;
        ~Discard()
        {
            clock.release();
            ZORUSTEdiscardtimer(timer);
        }
    } discard{clock, timer};

    const ZORUSTETimeValue period = milliseconds(10);
    ASSERT_EQ(ZORUSTEsettimer(timer, &period), 1);
    ASSERT_TRUE(clock.awaitWaits(1));
    EXPECT_EQ(overrun.calls.load(), 0);
    clock.move(10);
    // The first call took 5.5 periods: five more calls follow at once, and
    // the thread waits for the end of the seventh period.
    ASSERT_TRUE(clock.awaitWaits(2));
    EXPECT_EQ(overrun.calls.load(), 6);
    clock.move(5);
    ASSERT_TRUE(clock.awaitWaits(3));
    EXPECT_EQ(overrun.calls.load(), 7);
}

TEST_F(ExternalEngine, PeriodZeroBecomesOneMicrosecond)
{
    Counter counter;
    void *timer = ZORUSTEnewtimer(&Counter::callback, &counter);
    ASSERT_NE(timer, nullptr);
    const ZORUSTETimeValue zero{0, 0};
    ASSERT_EQ(ZORUSTEsettimer(timer, &zero), 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_EQ(ZORUSTEdiscardtimer(timer), ZORUSTE_SUCCESS);
    EXPECT_GT(counter.calls.load(), 20);  // far more than one per millisecond slot would give
}

TEST_F(ExternalEngine, TimersThatNeverRanAndPriorities)
{
    Counter counter;
    void *timer = ZORUSTEnewtimer(&Counter::callback, &counter);
    ASSERT_NE(timer, nullptr);
    const int32_t priority = ZORUSTEgetpriority(timer);
    EXPECT_TRUE(priority == 0 || priority == 2) << priority;  // raising it needs a privilege on POSIX
    EXPECT_EQ(ZORUSTEsetpriority(timer, 0), 1);
    EXPECT_EQ(ZORUSTEgetpriority(timer), 0);
    const ZORUSTETimeValue tooLong{3000, 0};  // beyond 2^31 microseconds
    EXPECT_EQ(ZORUSTEsettimer(timer, &tooLong), 0);
    EXPECT_EQ(ZORUSTEdiscardtimer(timer), ZORUSTE_SUCCESS);  // its thread still waits for a first period
    EXPECT_EQ(ZORUSTEdiscardtimer(timer), ZORUSTE_ERR_INVALID_TIMER);
    EXPECT_EQ(counter.calls.load(), 0);
}
