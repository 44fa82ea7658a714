// The timer engine on the multimedia timer service. Timers up to the chaining
// limit (429,496 ms) are periodic events of the service; longer periods are
// chains of one-shot events that count the periods themselves. All callbacks
// run on the service's one thread.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/lock.h"
#include "platform/multimedia_timer.h"
#include "timing/zoruste.h"

namespace tollan::timing {

class MMSystem final : public ZORUSTE {
public:
    using Loader = std::unique_ptr<platform::MultimediaTimer> (*)() noexcept;

    // `loader` loads the service; tests hand in one that wraps it.
    explicit MMSystem(Loader loader = &platform::MultimediaTimer::load) noexcept : loader_(loader) {}

    bool startUp() noexcept override;
    int32_t localTime(ZORUSTETimeValue *now) noexcept override;
    int32_t resolution(ZORUSTETimeValue *resolution) noexcept override;
    void *newTimer(ZORUSTECallback callback, void *callbackData) noexcept override;
    void discardTimer(void *timer) noexcept override;
    bool setTimer(void *timer, const ZORUSTETimeValue &period) noexcept override;
    int32_t setPriority(void *timer, int32_t priority) noexcept override;
    int32_t getPriority(void *timer) noexcept override;

    // The longest single event; longer periods are chained. Tests shorten it.
    static constexpr uint32_t kChainLimitMs = 429496;
    static void setChainLimitForTesting(uint32_t limitMs) noexcept;

private:
    struct Record;
    static void periodicEvent(uint32_t eventId, void *context) noexcept;
    static void chainEvent(uint32_t eventId, void *context) noexcept;
    // Runs the record's callback (a discarded record's is a no-op).
    static void runCallback(Record &record) noexcept;
    // Counts the periods that have passed on a chained timer, running the
    // callback for each; returns the time into the current period.
    uint32_t catchUp(Record &record) noexcept;
    void rearmChain(Record &record, uint32_t eventId, uint32_t elapsedMs) noexcept;

    Loader loader_;
    std::unique_ptr<platform::MultimediaTimer> service_;
    uint32_t minPeriodMs_ = 0;
    uint32_t maxPeriodMs_ = 0;
    // Guards every record's event id, period and period start.
    platform::RecursiveLock lock_;
};

}  // namespace tollan::timing
