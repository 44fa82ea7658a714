// The ZORUSTE exports: argument checks, the live-timer table, then the
// engine's slot.
#include <tollan/timerengine.h>

#include "timing/engines.h"
#include "timing/live_timers.h"

using namespace tollan::timing;

int32_t ZORUSTEinitialize(void) noexcept
{
    return chooseEngine() ? 1 : 0;
}

int32_t ZORUSTElocaltime(ZORUSTETimeValue *now) noexcept
{
    ZORUSTE *engine = chosenEngine();
    if (!engine) return ZORUSTE_ERR_NO_ENGINE;
    if (!now) return ZORUSTE_ERR_NULL_POINTER;
    return engine->localTime(now);
}

int32_t ZORUSTEresolution(ZORUSTETimeValue *resolution) noexcept
{
    ZORUSTE *engine = chosenEngine();
    if (!engine) return ZORUSTE_ERR_NO_ENGINE;
    if (!resolution) return ZORUSTE_ERR_NULL_POINTER;
    return engine->resolution(resolution);
}

void *ZORUSTEnewtimer(ZORUSTECallback callback, void *callbackData) noexcept
{
    ZORUSTE *engine = chosenEngine();
    if (!engine || !callback) return nullptr;
    void *timer = engine->newTimer(callback, callbackData);
    if (timer && !addLiveTimer(timer, engine)) {
        engine->discardTimer(timer);
        return nullptr;
    }
    return timer;
}

int32_t ZORUSTEdiscardtimer(void *timer) noexcept
{
    // Out of the table first: from here on no other call reaches the timer,
    // and the engine may wait for its thread without holding the table.
    ZORUSTE *engine = removeLiveTimer(timer);
    if (!engine) return ZORUSTE_ERR_INVALID_TIMER;
    engine->discardTimer(timer);
    return ZORUSTE_SUCCESS;
}

int32_t ZORUSTEsettimer(void *timer, const ZORUSTETimeValue *period) noexcept
{
    if (!period) return 0;
    return withLiveTimer(timer, 0, [&](ZORUSTE &engine) { return engine.setTimer(timer, *period) ? 1 : 0; });
}

int32_t ZORUSTEsetpriority(void *timer, int32_t priority) noexcept
{
    return withLiveTimer(timer, 0, [&](ZORUSTE &engine) { return engine.setPriority(timer, priority); });
}

int32_t ZORUSTEgetpriority(void *timer) noexcept
{
    return withLiveTimer(timer, ZORUSTE_PRIORITY_ERROR,
                         [&](ZORUSTE &engine) { return engine.getPriority(timer); });
}
