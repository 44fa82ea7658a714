/*
 * Utility library: the process clock, waits, date and time strings, rounding
 * and a few console helpers.
 *
 * The clock's time source is chosen once when the library starts: the
 * performance counter (the monotonic clock outside Windows), else the
 * multimedia timer with its period raised to 1 ms, else, or when the setting
 * "useDefaultTimer" (a DWORD under HKEY_CURRENT_USER\Software\Vantrel\ZOR\17.0)
 * is non-zero, the plain millisecond tick count.
 *
 * Thread safety: every function may be called from any thread. Timer, Delay
 * and SyncWait share one lock, held only for each reading, never while
 * sleeping.
 */
#ifndef TOLLAN_UTILITY_H
#define TOLLAN_UTILITY_H

#include <tollan/export.h>

TOLLAN_BEGIN_DECLS

/*
 * Seconds since the first timing call of the process (that call returns 0.0).
 * The value never decreases: a reading of the underlying clock that would go
 * backwards is taken as one wrap of the clock (4294967.296 s) and counted.
 */
TOLLAN_API double Timer(void) TOLLAN_NOEXCEPT;

/*
 * Waits at least `seconds` seconds plus the clock's resolution (0.001 s, or
 * 0.055 s with the plain tick count). Zero, negative and NaN values return at
 * once. While more than 0.1 s remain the thread sleeps half of what remains,
 * at most a day at a time; the last tenth of a second is spent polling the
 * clock, for precision. Any length may be given: a very long wait, and an
 * infinite one (INFINITY never returns), sleeps the whole time without
 * using the processor.
 */
TOLLAN_API void Delay(double seconds) TOLLAN_NOEXCEPT;

/*
 * Waits until the Timer value reaches beginTime + interval (plus the clock's
 * resolution). beginTime is a value that Timer returned. An interval of zero
 * or less, or a time already past, returns at once, and so does a NaN in
 * either argument. The wait sleeps as Delay's does, so a deadline far away
 * (or infinitely far: it never returns) costs no processor time. Calling
 * SyncWait with the previous deadline as beginTime gives a loop with a
 * steady period.
 */
TOLLAN_API void SyncWait(double beginTime, double interval) TOLLAN_NOEXCEPT;

/*
 * The local date as "MM-DD-YYYY" (month first). The text lives in the calling
 * thread's own buffer and stays valid until the same thread calls DateStr
 * again. Should that buffer not be available, a buffer shared by all
 * threads is used. Never NULL.
 */
TOLLAN_API char *DateStr(void) TOLLAN_NOEXCEPT;

/* The local time as "HH:MM:SS" (24-hour clock); per-thread like DateStr. */
TOLLAN_API char *TimeStr(void) TOLLAN_NOEXCEPT;

/*
 * x rounded to the nearest integer, halves to the even neighbour (2.5 gives 2,
 * 3.5 gives 4, -2.5 gives -2). Values outside the 32-bit range, and NaN, give
 * INT32_MIN (-2147483648).
 */
TOLLAN_API int32_t RoundRealToNearestInteger(double x) TOLLAN_NOEXCEPT;

/* The integer part of x, toward zero (-2.7 gives -2.0), as a double. */
TOLLAN_API double TruncateRealNumber(double x) TOLLAN_NOEXCEPT;

/* Sounds the default beep (the terminal bell outside Windows); the system's
 * result, non-zero on success. */
TOLLAN_API int32_t ZOR_Beep(void) TOLLAN_NOEXCEPT;

/* Clears the screen of a console-less program: does nothing. */
TOLLAN_API void Cls(void) TOLLAN_NOEXCEPT;

/*
 * Microsecond clock and sleeps of the real-time targets. On this platform they
 * do nothing and return 0; use Timer, Delay and SyncWait instead.
 */
TOLLAN_API uint64_t GetTimeUS(void) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t SleepUS(uint64_t microseconds) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t SleepUntilUS(uint64_t wakeTimeUS) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t SleepUntilNextMultipleUS(uint64_t multipleUS) TOLLAN_NOEXCEPT;

TOLLAN_END_DECLS

#endif
