// The multimedia timer service (winmm's model): a device with a minimum and
// maximum period, a system timer rate that can be raised, a millisecond clock
// and periodic or one-shot events that call back on the service's own thread.
//
// Elsewhere one timer thread per process sleeps to the earliest absolute
// deadline on the monotonic clock; the device's periods run from 1 ms to
// 1,000,000 ms.
#pragma once

#include <cstdint>
#include <memory>

namespace tollan::platform {

// Results of the service's calls: 0 or an error code of the system's own.
inline constexpr uint32_t kTimerNoError = 0;   // TIMERR_NOERROR
inline constexpr uint32_t kTimerNoCanDo = 97;  // TIMERR_NOCANDO

// The process clock's own use of the device, through the system's linked
// entry points: timeGetDevCaps, timeBeginPeriod, timeEndPeriod, timeGetTime.
uint32_t multimediaDeviceCaps(uint32_t *minPeriodMs, uint32_t *maxPeriodMs) noexcept;
uint32_t multimediaBeginPeriod(uint32_t periodMs) noexcept;
uint32_t multimediaEndPeriod(uint32_t periodMs) noexcept;
uint32_t multimediaTimeMs() noexcept;

// What an event calls: fire(eventId, context), on the service's thread. The
// target must outlive every event that names it.
struct TimerEventTarget {
    void (*fire)(uint32_t eventId, void *context) noexcept;
    void *context;
};

// The service loaded at run time (LoadLibrary("winmm.dll") and its seven
// entry points by name). Destroying the object unloads it.
class MultimediaTimer {
public:
    virtual ~MultimediaTimer() = default;
    // Null when the service or one of its entry points is missing.
    static std::unique_ptr<MultimediaTimer> load() noexcept;

    virtual uint32_t timeMs() noexcept = 0;        // timeGetTime
    virtual uint32_t systemTimeMs() noexcept = 0;  // timeGetSystemTime, in milliseconds
    virtual uint32_t deviceCaps(uint32_t *minPeriodMs, uint32_t *maxPeriodMs) noexcept = 0;
    virtual uint32_t beginPeriod(uint32_t periodMs) noexcept = 0;
    virtual uint32_t endPeriod(uint32_t periodMs) noexcept = 0;
    // timeSetEvent: the event's id, 0 on failure (a delay outside the
    // device's periods among others). A periodic event fires every delayMs
    // from now on; a one-shot event fires once.
    virtual uint32_t setEvent(uint32_t delayMs, uint32_t resolutionMs, TimerEventTarget *target,
                              bool periodic) noexcept = 0;
    // timeKillEvent: kTimerNoError, or kTimerNoCanDo for an unknown or spent
    // event. An event already being delivered may still call its target.
    virtual uint32_t killEvent(uint32_t eventId) noexcept = 0;
};

}  // namespace tollan::platform
