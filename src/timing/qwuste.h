// The timer engine on the external timing engine ("qwuste.dll"). Each timer
// has a thread of its own that waits through the engine until each due time
// and runs the callback; a callback that overran is run again for each period
// it used up.
#pragma once

#include <atomic>
#include <cstdint>

#include "timing/qwuste_engine.h"
#include "timing/zoruste.h"

namespace tollan::timing {

class QWUSTE final : public ZORUSTE {
public:
    bool startUp() noexcept override;
    int32_t localTime(ZORUSTETimeValue *now) noexcept override;
    int32_t resolution(ZORUSTETimeValue *resolution) noexcept override;
    void *newTimer(ZORUSTECallback callback, void *callbackData) noexcept override;
    // Waits for the timer's thread to end, except from that thread itself:
    // then the thread frees the timer as it leaves.
    void discardTimer(void *timer) noexcept override;
    // Periods are kept in 32-bit microseconds: at least 1 us, at most 2^31 - 1 us.
    bool setTimer(void *timer, const ZORUSTETimeValue &period) noexcept override;
    int32_t setPriority(void *timer, int32_t priority) noexcept override;
    int32_t getPriority(void *timer) noexcept override;
    void *engineObject() noexcept override { return engine_.load(); }
    void releaseTimer(void *timer) noexcept override;

private:
    struct Record;
    static void timerThread(void *record) noexcept;
    uint32_t nowUs() noexcept;
    // Runs the callback until it is cleared; the thread's whole life after the
    // first period was set.
    void runPeriods(Record &record) noexcept;
    // Clears the callback and wakes the thread; true when the caller is the
    // timer's own thread, or `detach` asks the thread to free itself anyway.
    static bool stop(Record &record, bool detach) noexcept;

    void *module_ = nullptr;
    // Timer threads read it while a second start-up may replace it.
    std::atomic<QwusteEngine *> engine_{nullptr};
};

}  // namespace tollan::timing
