// The timer engine's abstract base. The virtual operations keep their slot
// order (0 to 8): each ZORUSTE export calls one of them on the chosen engine
// and passes its arguments and result through unchanged.
#pragma once

#include <tollan/timerengine.h>

#include <cstdint>

namespace tollan::timing {

class ZORUSTE {
public:
    // 0: starts the engine; true on success (and when already started).
    virtual bool startUp() noexcept = 0;
    // 1: the engine's current time; ZORUSTE_SUCCESS or an error code.
    virtual int32_t localTime(ZORUSTETimeValue *now) noexcept = 0;
    // 2: the engine's resolution; ZORUSTE_SUCCESS or an error code.
    virtual int32_t resolution(ZORUSTETimeValue *resolution) noexcept = 0;
    // 3: a new, idle timer; null when it cannot be made.
    virtual void *newTimer(ZORUSTECallback callback, void *callbackData) noexcept = 0;
    // 4: stops and frees a timer.
    virtual void discardTimer(void *timer) noexcept = 0;
    // 5: sets the period and (re)starts the timer; true on success.
    virtual bool setTimer(void *timer, const ZORUSTETimeValue &period) noexcept = 0;
    // 6 and 7: the priority of the thread that runs the timer's callback.
    virtual int32_t setPriority(void *timer, int32_t priority) noexcept = 0;
    virtual int32_t getPriority(void *timer) noexcept = 0;
    // 8: the engine object underneath, if any.
    virtual void *engineObject() noexcept { return nullptr; }
    // Lets a timer go without waiting for its callbacks to end: for the
    // program's stop, which may run where waiting for a thread deadlocks.
    virtual void releaseTimer(void *timer) noexcept { discardTimer(timer); }

protected:
    // Engines live as long as the process; nothing deletes them through the base.
    ~ZORUSTE() = default;
};

}  // namespace tollan::timing
