// The timer engine on the multimedia timer, through the exports and, with a
// device of another minimum period or one that the test drives by hand,
// directly.
#include <gtest/gtest.h>

#include <tollan/timerengine.h>

#include <atomic>
#include <chrono>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "timer_checks.h"
#include "timing/engines.h"
#include "timing/mmsystem.h"

using namespace tollan;
using namespace timing_test;

TEST(TimerEngine, InitialisesOnceWithTheMultimediaTimersClockAndResolution)
{
    ASSERT_EQ(ZORUSTEinitialize(), 1);
    ASSERT_EQ(timing::chosenEngine(), &timing::mmsystemEngine());
    EXPECT_EQ(ZORUSTEinitialize(), 1);
    EXPECT_EQ(timing::chosenEngine(), &timing::mmsystemEngine());
    EXPECT_EQ(timing::mmsystemEngine().engineObject(), nullptr);

    ZORUSTETimeValue resolution{99, 99};
    ASSERT_EQ(ZORUSTEresolution(&resolution), ZORUSTE_SUCCESS);
    EXPECT_EQ(resolution.seconds, 0u);
    EXPECT_EQ(resolution.nanoseconds, 1000000u);  // the device's 1 ms

    ZORUSTETimeValue first{}, second{};
    ASSERT_EQ(ZORUSTElocaltime(&first), ZORUSTE_SUCCESS);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_EQ(ZORUSTElocaltime(&second), ZORUSTE_SUCCESS);
    EXPECT_EQ(first.nanoseconds % 1000000, 0u);
    const int64_t elapsedMs = (int64_t{second.seconds} - first.seconds) * 1000 +
                              (int64_t{second.nanoseconds} - first.nanoseconds) / 1000000;
    EXPECT_GE(elapsedMs, 19);
    EXPECT_LT(elapsedMs, 500);
}

TEST(TimerEngine, BadInputFailsCleanly)
{
    ASSERT_EQ(ZORUSTEinitialize(), 1);
    Counter counter;
    const ZORUSTETimeValue period = milliseconds(10);
    EXPECT_EQ(ZORUSTElocaltime(nullptr), ZORUSTE_ERR_NULL_POINTER);
    EXPECT_EQ(ZORUSTEresolution(nullptr), ZORUSTE_ERR_NULL_POINTER);
    EXPECT_EQ(ZORUSTEnewtimer(nullptr, &counter), nullptr);
    EXPECT_EQ(ZORUSTEdiscardtimer(nullptr), ZORUSTE_ERR_INVALID_TIMER);
    EXPECT_EQ(ZORUSTEdiscardtimer(&counter), ZORUSTE_ERR_INVALID_TIMER);  // never a timer
    EXPECT_EQ(ZORUSTEsettimer(nullptr, &period), 0);
    EXPECT_EQ(ZORUSTEgetpriority(&counter), ZORUSTE_PRIORITY_ERROR);

    void *timer = ZORUSTEnewtimer(&Counter::callback, &counter);
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(ZORUSTEsettimer(timer, nullptr), 0);
    const ZORUSTETimeValue zero{0, 0};
    const ZORUSTETimeValue belowOneMs{0, 999999};
    EXPECT_EQ(ZORUSTEsettimer(timer, &zero), 0);
    EXPECT_EQ(ZORUSTEsettimer(timer, &belowOneMs), 0);
    EXPECT_EQ(ZORUSTEsetpriority(timer, 2), 0);
    EXPECT_EQ(ZORUSTEgetpriority(timer), 0);
    EXPECT_EQ(ZORUSTEdiscardtimer(timer), ZORUSTE_SUCCESS);
    EXPECT_EQ(ZORUSTEdiscardtimer(timer), ZORUSTE_ERR_INVALID_TIMER);
    EXPECT_EQ(ZORUSTEsettimer(timer, &period), 0);
    EXPECT_EQ(counter.calls.load(), 0);
}

TEST(TimerEngine, DiscardFromTheTimersOwnCallback)
{
    ASSERT_EQ(ZORUSTEinitialize(), 1);
    expectDiscardFromOwnCallback();
}

TEST(TimerEngine, ConcurrentTimersKeepTheirOwnPace)
{
    ASSERT_EQ(ZORUSTEinitialize(), 1);
    expectConcurrentTimersKeepTheirOwnPace();
}

namespace {

// The real service, with a device whose minimum period is 10 ms; it notes the
// events it is asked for.
struct EventRequest {
    uint32_t delayMs;
    bool periodic;
};
std::mutex requestsLock;
std::vector<EventRequest> requests;

class CoarseDevice final : public platform::MultimediaTimer {
public:
    explicit CoarseDevice(std::unique_ptr<platform::MultimediaTimer> real) : real_(std::move(real)) {}
    uint32_t timeMs() noexcept override { return real_->timeMs(); }
    uint32_t systemTimeMs() noexcept override { return real_->systemTimeMs(); }
    uint32_t deviceCaps(uint32_t *minPeriodMs, uint32_t *maxPeriodMs) noexcept override
    {
        *minPeriodMs = 10;
        *maxPeriodMs = 1000000;
        return platform::kTimerNoError;
    }
    uint32_t beginPeriod(uint32_t periodMs) noexcept override { return real_->beginPeriod(periodMs); }
    uint32_t endPeriod(uint32_t periodMs) noexcept override { return real_->endPeriod(periodMs); }
    uint32_t setEvent(uint32_t delayMs, uint32_t resolutionMs, platform::TimerEventTarget *target,
                      bool periodic) noexcept override
    {
        {
            std::lock_guard guard(requestsLock);
            requests.push_back(EventRequest{delayMs, periodic});
        }
        return real_->setEvent(delayMs, resolutionMs, target, periodic);
    }
    uint32_t killEvent(uint32_t eventId) noexcept override { return real_->killEvent(eventId); }

private:
    std::unique_ptr<platform::MultimediaTimer> real_;
};

std::unique_ptr<platform::MultimediaTimer> loadCoarseDevice() noexcept
{
    auto real = platform::MultimediaTimer::load();
    if (!real) return nullptr;
    return std::make_unique<CoarseDevice>(std::move(real));
}

std::vector<EventRequest> takeRequests()
{
    std::lock_guard guard(requestsLock);
    return std::move(requests);
}

// Events may still arrive for a discarded timer, so the engine stays.
timing::MMSystem &coarseEngine()
{
    static auto *engine = new timing::MMSystem(&loadCoarseDevice);
    return *engine;
}

}  // namespace

TEST(TimerEngine, PeriodsBelowTheDeviceMinimumAreRaised)
{
    timing::MMSystem &engine = coarseEngine();
    ASSERT_TRUE(engine.startUp());
    ZORUSTETimeValue resolution{};
    ASSERT_EQ(engine.resolution(&resolution), ZORUSTE_SUCCESS);
    EXPECT_EQ(resolution.nanoseconds, 10000000u);

    Counter counter;
    void *timer = engine.newTimer(&Counter::callback, &counter);
    ASSERT_NE(timer, nullptr);
    takeRequests();
    ASSERT_TRUE(engine.setTimer(timer, milliseconds(3)));
    const std::vector<EventRequest> made = takeRequests();
    ASSERT_EQ(made.size(), 1u);
    EXPECT_EQ(made[0].delayMs, 10u);
    EXPECT_TRUE(made[0].periodic);
    engine.discardTimer(timer);
}

TEST(TimerEngine, LongPeriodsAreChainsOfOneShotEvents)
{
    timing::MMSystem &engine = coarseEngine();
    ASSERT_TRUE(engine.startUp());
    timing::MMSystem::setChainLimitForTesting(25);
    Counter counter;
    void *timer = engine.newTimer(&Counter::callback, &counter);
    ASSERT_NE(timer, nullptr);
    takeRequests();
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(engine.setTimer(timer, milliseconds(60)));
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    engine.discardTimer(timer);
    const double periods =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count() / 60;
    timing::MMSystem::setChainLimitForTesting(0);

    EXPECT_TRUE(plausibleCount(counter.calls.load(), periods)) << counter.calls.load() << " in " << periods;
    const std::vector<EventRequest> made = takeRequests();
    EXPECT_GE(made.size(), 3u);  // a 60 ms period takes links of 25, 25 and 10 ms
    for (const EventRequest &request : made) {
        EXPECT_FALSE(request.periodic);
        EXPECT_LE(request.delayMs, 25u);
    }
    // Run on; the discarded timer must stay silent.
    const int afterDiscard = counter.calls.load();
    std::this_thread::sleep_for(std::chrono::milliseconds(80));
    EXPECT_EQ(counter.calls.load(), afterDiscard);
}

namespace {

// A device whose clock stands still until the test moves it, and whose
// events fire only when the test fires them, on the test's thread: the
// engine's own bookkeeping, without the timing of a real machine.
class ManualDevice final : public platform::MultimediaTimer {
public:
    struct Event {
        uint32_t id;
        uint32_t delayMs;
        bool periodic;
        platform::TimerEventTarget *target;
    };

    uint32_t timeMs() noexcept override { return nowMs.load(); }
    uint32_t systemTimeMs() noexcept override { return nowMs.load(); }
    uint32_t deviceCaps(uint32_t *minPeriodMs, uint32_t *maxPeriodMs) noexcept override
    {
        *minPeriodMs = 1;
        *maxPeriodMs = 1000000;
        return platform::kTimerNoError;
    }
    uint32_t beginPeriod(uint32_t) noexcept override { return platform::kTimerNoError; }
    uint32_t endPeriod(uint32_t) noexcept override { return platform::kTimerNoError; }
    uint32_t setEvent(uint32_t delayMs, uint32_t, platform::TimerEventTarget *target,
                      bool periodic) noexcept override
    {
        std::lock_guard guard(lock_);
        pending_.push_back(Event{nextId_, delayMs, periodic, target});
        return nextId_++;
    }
    uint32_t killEvent(uint32_t eventId) noexcept override
    {
        std::lock_guard guard(lock_);
        for (auto it = pending_.begin(); it != pending_.end(); ++it) {
            if (it->id == eventId) {
                pending_.erase(it);
                return platform::kTimerNoError;
            }
        }
        return platform::kTimerNoCanDo;
    }

    std::vector<Event> pending()
    {
        std::lock_guard guard(lock_);
        return {pending_.begin(), pending_.end()};
    }
    // Forgets the pending events, whose targets may be gone, and says how
    // many there were.
    size_t dropPending()
    {
        std::lock_guard guard(lock_);
        const size_t count = pending_.size();
        pending_.clear();
        return count;
    }
    // Moves the clock on by ms and delivers the one pending event, which a
    // one-shot event leaves spent.
    void advanceAndFire(uint32_t ms)
    {
        nowMs += ms;
        std::vector<Event> events = pending();
        ASSERT_EQ(events.size(), 1u);
        if (!events[0].periodic) killEvent(events[0].id);
        events[0].target->fire(events[0].id, events[0].target->context);
    }

    std::atomic<uint32_t> nowMs{1000};

private:
    std::mutex lock_;
    // A list frees what it forgets: no stale copy of a target stays in spare
    // room, where LeakSanitizer would count it as a reference to the record.
    std::list<Event> pending_;
    uint32_t nextId_ = 1;
};

ManualDevice *manualDevice = nullptr;

// One engine on the manual device for the tests below; it lives as long as
// the process, as the engines do.
timing::MMSystem &manualEngine()
{
    static auto *engine = new timing::MMSystem([]() noexcept -> std::unique_ptr<platform::MultimediaTimer> {
        auto device = std::make_unique<ManualDevice>();
        manualDevice = device.get();
        return device;
    });
    return *engine;
}

class ManualTimerEngine : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(manualEngine().startUp()); }
    void TearDown() override
    {
        timing::MMSystem::setChainLimitForTesting(0);
        manualDevice->dropPending();  // whatever a failed test left behind
    }
};

// A callback whose first call takes `firstCallMs` of the manual clock.
struct SlowFirstCall {
    uint32_t firstCallMs;
    std::atomic<int> calls{0};
    static void callback(void *context)
    {
        auto *self = static_cast<SlowFirstCall *>(context);
        if (++self->calls == 1) manualDevice->nowMs += self->firstCallMs;
    }
};

// Discards its timer from its first call, on the engine given.
struct DiscardsItself {
    timing::MMSystem *engine;
    void *timer = nullptr;
    std::atomic<int> calls{0};
    static void callback(void *context)
    {
        auto *self = static_cast<DiscardsItself *>(context);
        if (++self->calls == 1) self->engine->discardTimer(self->timer);
    }
};

}  // namespace

TEST_F(ManualTimerEngine, AChainedTimerMakesUpForThePeriodsASlowCallbackUsedUp)
{
    timing::MMSystem &engine = manualEngine();
    timing::MMSystem::setChainLimitForTesting(25);
    SlowFirstCall slow{200};
    void *timer = engine.newTimer(&SlowFirstCall::callback, &slow);
    ASSERT_NE(timer, nullptr);
    ASSERT_TRUE(engine.setTimer(timer, milliseconds(60)));

    // Links of 25, 25 and 10 ms make up the first period.
    ASSERT_NO_FATAL_FAILURE(manualDevice->advanceAndFire(25));
    ASSERT_NO_FATAL_FAILURE(manualDevice->advanceAndFire(25));
    EXPECT_EQ(slow.calls.load(), 0);
    ASSERT_NO_FATAL_FAILURE(manualDevice->advanceAndFire(10));
    // The first call ran 200 ms, three whole periods and 20 ms into a fourth:
    // one call for each period passed, and the next period ends 40 ms later.
    EXPECT_EQ(slow.calls.load(), 4);
    ASSERT_EQ(manualDevice->pending().size(), 1u);
    EXPECT_EQ(manualDevice->pending()[0].delayMs, 25u);
    ASSERT_NO_FATAL_FAILURE(manualDevice->advanceAndFire(40));
    EXPECT_EQ(slow.calls.load(), 5);
    EXPECT_EQ(manualDevice->pending()[0].delayMs, 25u);
    engine.discardTimer(timer);
    ASSERT_NO_FATAL_FAILURE(manualDevice->advanceAndFire(25));  // frees the record
    EXPECT_EQ(slow.calls.load(), 5);
    EXPECT_EQ(manualDevice->dropPending(), 0u);
}

TEST_F(ManualTimerEngine, ATimerDiscardedFromItsOwnCallbackLeavesNoEventBehind)
{
    // Periodic events, and chained ones (a 60 ms period in links of 25 ms).
    timing::MMSystem &engine = manualEngine();
    for (uint32_t chainLimitMs : {0u, 25u}) {
        SCOPED_TRACE(chainLimitMs ? "chained" : "periodic");
        timing::MMSystem::setChainLimitForTesting(chainLimitMs);
        DiscardsItself self{&engine};
        self.timer = engine.newTimer(&DiscardsItself::callback, &self);
        ASSERT_NE(self.timer, nullptr);
        ASSERT_TRUE(engine.setTimer(self.timer, milliseconds(60)));
        while (self.calls.load() == 0 && !manualDevice->pending().empty())
            ASSERT_NO_FATAL_FAILURE(manualDevice->advanceAndFire(25));
        EXPECT_EQ(self.calls.load(), 1);
        // The record went with its event; under AddressSanitizer a record
        // freed too early, or never, is reported.
        EXPECT_EQ(manualDevice->dropPending(), 0u);
    }
}
