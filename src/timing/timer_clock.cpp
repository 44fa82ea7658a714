#include "timing/timer_clock.h"

#include <cstdint>
#include <mutex>

#include "platform/thread.h"
#include "timing/locks.h"
#include "timing/time_source.h"

namespace tollan::timing {

namespace {

constexpr double kSecondsPerWrap = 4294967.296;

struct TimerState {
    int32_t started = 0;
    uint64_t startReading = 0;
    uint32_t wraps = 0;
    double lastValue = 0.0;
};

constinit TimerState state;

}  // namespace

double readTimer() noexcept
{
    std::lock_guard guard(timerLock());
    const uint64_t raw = rawReading();
    if (!state.started) {
        state = TimerState{1, raw, 0, 0.0};
    }
    const double elapsed = static_cast<double>(raw - state.startReading) / 1000000.0;
    double value = state.wraps * kSecondsPerWrap + elapsed;
    if (state.lastValue > value + 0.000001) {
        ++state.wraps;
        value = state.wraps * kSecondsPerWrap + elapsed;
    }
    state.lastValue = value;
    return value;
}

void restartTimer() noexcept
{
    std::lock_guard guard(timerLock());
    state.started = 0;
}

uint32_t sleepSliceMs(double remaining) noexcept
{
    if (!(remaining > 0.1)) return 0;
    const double halfMs = remaining * 0.5 * 1000.0;
    // Compared before the conversion: a double beyond uint32_t's range (or
    // infinite) has no defined conversion.
    return halfMs < kLongestSleepMs ? static_cast<uint32_t>(halfMs) : kLongestSleepMs;
}

void waitUntil(double deadline, double now) noexcept
{
    while (deadline > now) {
        if (const uint32_t ms = sleepSliceMs(deadline - now); ms >= 1) platform::sleepMs(ms);
        now = readTimer();
    }
}

}  // namespace tollan::timing
