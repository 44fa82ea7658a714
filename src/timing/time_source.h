// The process clock's time source, chosen once by SetupPCTimer: the
// performance counter, the multimedia timer's millisecond clock with its
// period raised, or the plain tick count.
#pragma once

#include <cstdint>

namespace tollan::timing {

enum class TimeSource { tickCount, multimediaTimer, performanceCounter };

TimeSource timeSource() noexcept;
// The period raised with the multimedia timer; 0 when none was raised.
uint32_t raisedPeriodMs() noexcept;
// Forgets the raised period and returns it (0 when none) for the caller to
// give back; the millisecond clock stays in use.
uint32_t giveUpRaisedPeriod() noexcept;

// Switches the source. Not meant to race with readings: SetupPCTimer runs
// before any timing call.
void useTickCount() noexcept;
void useMultimediaTimer(uint32_t periodMs) noexcept;
void usePerformanceCounter(int64_t countsPerSecond) noexcept;

// The raw reading in microsecond units. With a millisecond tick the tick is
// scaled by scaleTick.
uint64_t rawReading() noexcept;
// tick x 1,000,000 in 32-bit unsigned arithmetic, wrapping, then widened.
// The fallback clocks have always been scaled so, and Timer's wrap rule
// (4294967.296 s per wrap) is built around it.
constexpr uint64_t scaleTick(uint32_t tickMs) noexcept
{
    return static_cast<uint32_t>(tickMs * 1000000u);
}

// What every wait adds to its deadline: 0.001 s with the performance counter
// or the multimedia timer, 0.055 s with the plain tick count.
double waitResolution() noexcept;

}  // namespace tollan::timing
