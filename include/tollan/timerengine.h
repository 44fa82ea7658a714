/*
 * Timer engine: periodic timers that call a function of the program on a
 * thread of the engine.
 *
 * ZORUSTEinitialize chooses the engine once per process: the multimedia timer
 * (winmm on Windows, a timer thread of the library elsewhere) when it can be
 * started, else the external timing engine "qwuste.dll" ("libqwuste.so"
 * outside Windows). Every other function needs a successful
 * ZORUSTEinitialize first.
 *
 * Callbacks: with the multimedia timer all timers share one thread, so a slow
 * callback delays the others; a discarded timer may still call a callback
 * once more, but never the discarded one. With the external engine each
 * timer has a thread of its own, and once ZORUSTEdiscardtimer returns no
 * callback of that timer runs any more. A callback may discard its own
 * timer.
 *
 * When the program stops (the run-state stop event), timers still alive are
 * discarded.
 */
#ifndef TOLLAN_TIMERENGINE_H
#define TOLLAN_TIMERENGINE_H

#include <tollan/export.h>

TOLLAN_BEGIN_DECLS

/* A point in time or a duration. */
typedef struct ZORUSTETimeValue {
    uint32_t seconds;
    uint32_t nanoseconds; /* 0 .. 999,999,999 */
} ZORUSTETimeValue;

/* What a timer calls each period, with the data given to ZORUSTEnewtimer. */
typedef void (*ZORUSTECallback)(void *callbackData);

/* Results of ZORUSTElocaltime, ZORUSTEresolution and ZORUSTEdiscardtimer. */
enum {
    ZORUSTE_SUCCESS = 0,
    ZORUSTE_ERR_NO_ENGINE = -1,    /* ZORUSTEinitialize did not succeed */
    ZORUSTE_ERR_NULL_POINTER = -2, /* a required pointer is NULL */
    ZORUSTE_ERR_INVALID_TIMER = -3 /* NULL, unknown or already discarded timer */
};

/* What ZORUSTEgetpriority returns for an invalid timer or without an engine. */
#define ZORUSTE_PRIORITY_ERROR 0x7FFFFFFF

/*
 * Chooses the engine, once per process; later calls return at once.
 * Concurrent first calls are serialised. Returns 1 when an engine is in use,
 * 0 when none could be started.
 */
TOLLAN_API int32_t ZORUSTEinitialize(void) TOLLAN_NOEXCEPT;

/*
 * The engine's current time: the multimedia timer's millisecond clock
 * (milliseconds since system start, wrapping after 49.7 days), or the
 * external engine's nanosecond clock.
 *   now: receives the time; NULL gives ZORUSTE_ERR_NULL_POINTER.
 * Returns ZORUSTE_SUCCESS or a negative ZORUSTE_ERR_* code.
 */
TOLLAN_API int32_t ZORUSTElocaltime(ZORUSTETimeValue *now) TOLLAN_NOEXCEPT;

/*
 * The engine's resolution. With the multimedia timer this raises the system
 * timer rate to that resolution (every call raises it once more) and a
 * positive result is the system's error code when it cannot.
 *   resolution: receives the resolution; NULL gives ZORUSTE_ERR_NULL_POINTER.
 * Returns ZORUSTE_SUCCESS, a negative ZORUSTE_ERR_* code or a positive
 * system error code.
 */
TOLLAN_API int32_t ZORUSTEresolution(ZORUSTETimeValue *resolution) TOLLAN_NOEXCEPT;

/*
 * A new timer, not yet running: ZORUSTEsettimer starts it.
 *   callback:     called each period; NULL is refused.
 *   callbackData: handed to the callback; may be NULL.
 * Returns the timer, or NULL without an engine, for a NULL callback or when
 * memory or a thread cannot be had.
 */
TOLLAN_API void *ZORUSTEnewtimer(ZORUSTECallback callback, void *callbackData) TOLLAN_NOEXCEPT;

/*
 * Stops and frees a timer; the handle is invalid afterwards. With the external
 * engine the call waits until the timer's thread has ended (at most about one
 * period) unless it comes from that timer's own callback.
 * Returns ZORUSTE_SUCCESS, or ZORUSTE_ERR_INVALID_TIMER for NULL, a handle
 * that ZORUSTEnewtimer did not return, or a timer already discarded.
 */
TOLLAN_API int32_t ZORUSTEdiscardtimer(void *timer) TOLLAN_NOEXCEPT;

/*
 * Sets a timer's period and (re)starts it; the first call comes one period
 * from now.
 *   period: the period; NULL is refused. The multimedia timer works in whole
 *           milliseconds: a period below 1 ms fails, one below the device's
 *           minimum is raised to it, and periods above 429,496 ms are made of
 *           chained shorter waits; the longest is 2^32 - 1 ms. The external
 *           engine works in microseconds: 0 becomes 1 us, the longest is
 *           2^31 - 1 us (about 35 minutes). Either engine calls once for each
 *           period that passed, also when callbacks fell behind.
 * Returns 1 on success, 0 on failure (invalid timer, NULL or refused period,
 * the system cannot start the timer).
 */
TOLLAN_API int32_t ZORUSTEsettimer(void *timer, const ZORUSTETimeValue *period) TOLLAN_NOEXCEPT;

/*
 * Sets the priority of a timer's thread (the Windows scale: -15 idle .. 15
 * time critical; 2 highest). The multimedia timer has no thread of its own
 * per timer: the call does nothing and returns 0. The external engine returns
 * 1 when the priority was set, 0 when refused (raising a priority needs a
 * privilege outside Windows) or for an invalid timer.
 */
TOLLAN_API int32_t ZORUSTEsetpriority(void *timer, int32_t priority) TOLLAN_NOEXCEPT;

/*
 * The priority of a timer's thread; 0 with the multimedia timer;
 * ZORUSTE_PRIORITY_ERROR for an invalid timer or without an engine.
 */
TOLLAN_API int32_t ZORUSTEgetpriority(void *timer) TOLLAN_NOEXCEPT;

TOLLAN_END_DECLS

#endif
