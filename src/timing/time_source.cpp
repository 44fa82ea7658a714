#include "timing/time_source.h"

#include <atomic>

#include "platform/clock.h"
#include "platform/multimedia_timer.h"
#include "timing/milliseconds.h"

namespace tollan::timing {

namespace {

// Set once at start-up, read by every thread afterwards.
std::atomic<TimeSource> source{TimeSource::tickCount};
std::atomic<int64_t> frequency{0};
std::atomic<uint32_t> periodMs{0};

// The performance counter in `unitsPerSecond`, truncated. Split into whole
// seconds and the rest so that the product cannot overflow.
uint64_t counterIn(int64_t unitsPerSecond) noexcept
{
    int64_t count = 0;
    platform::performanceCounter(&count);
    const int64_t countsPerSecond = frequency.load(std::memory_order_relaxed);
    return static_cast<uint64_t>(count / countsPerSecond * unitsPerSecond +
                                 count % countsPerSecond * unitsPerSecond / countsPerSecond);
}

uint32_t tickMs() noexcept
{
    return source.load(std::memory_order_relaxed) == TimeSource::multimediaTimer
               ? platform::multimediaTimeMs()
               : platform::tickCountMs();
}

}  // namespace

TimeSource timeSource() noexcept
{
    return source.load();
}

uint32_t raisedPeriodMs() noexcept
{
    return periodMs.load();
}

uint32_t giveUpRaisedPeriod() noexcept
{
    return periodMs.exchange(0);
}

void useTickCount() noexcept
{
    source.store(TimeSource::tickCount);
    periodMs.store(0);
}

void useMultimediaTimer(uint32_t period) noexcept
{
    periodMs.store(period);
    source.store(TimeSource::multimediaTimer);
}

void usePerformanceCounter(int64_t countsPerSecond) noexcept
{
    frequency.store(countsPerSecond);
    periodMs.store(0);
    source.store(TimeSource::performanceCounter);
}

uint64_t rawReading() noexcept
{
    if (source.load(std::memory_order_relaxed) == TimeSource::performanceCounter) return counterIn(1000000);
    return scaleTick(tickMs());
}

double waitResolution() noexcept
{
    return source.load(std::memory_order_relaxed) == TimeSource::tickCount ? 0.055 : 0.001;
}

uint32_t millisecondClock() noexcept
{
    if (source.load(std::memory_order_relaxed) == TimeSource::performanceCounter)
        return static_cast<uint32_t>(counterIn(1000));
    return tickMs();
}

uint32_t millisecondsSince(uint32_t start) noexcept
{
    return millisecondClock() - start;
}

}  // namespace tollan::timing
