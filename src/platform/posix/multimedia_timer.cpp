// The multimedia timer service on the process's timer thread. There is no
// system timer rate to raise: a period within the device's range is accepted
// and given back without effect.
#include "platform/multimedia_timer.h"

#include <new>

#include "platform/posix/timer_thread.h"

namespace tollan::platform {

namespace {

constexpr uint32_t kMinPeriodMs = 1;
constexpr uint32_t kMaxPeriodMs = 1000000;

bool withinDevice(uint32_t periodMs) noexcept
{
    return periodMs >= kMinPeriodMs && periodMs <= kMaxPeriodMs;
}

class ThreadTimer final : public MultimediaTimer {
public:
    uint32_t timeMs() noexcept override { return multimediaTimeMs(); }
    uint32_t systemTimeMs() noexcept override { return multimediaTimeMs(); }
    uint32_t deviceCaps(uint32_t *minPeriodMs, uint32_t *maxPeriodMs) noexcept override
    {
        return multimediaDeviceCaps(minPeriodMs, maxPeriodMs);
    }
    uint32_t beginPeriod(uint32_t periodMs) noexcept override { return multimediaBeginPeriod(periodMs); }
    uint32_t endPeriod(uint32_t periodMs) noexcept override { return multimediaEndPeriod(periodMs); }

    uint32_t setEvent(uint32_t delayMs, uint32_t, TimerEventTarget *target, bool periodic) noexcept override
    {
        if (!withinDevice(delayMs)) return 0;
        return posix::addTimerEvent(delayMs, target, periodic);
    }

    uint32_t killEvent(uint32_t eventId) noexcept override
    {
        return posix::removeTimerEvent(eventId) ? kTimerNoError : kTimerNoCanDo;
    }
};

}  // namespace

uint32_t multimediaDeviceCaps(uint32_t *minPeriodMs, uint32_t *maxPeriodMs) noexcept
{
    if (!minPeriodMs || !maxPeriodMs) return kTimerNoCanDo;
    *minPeriodMs = kMinPeriodMs;
    *maxPeriodMs = kMaxPeriodMs;
    return kTimerNoError;
}

uint32_t multimediaBeginPeriod(uint32_t periodMs) noexcept
{
    return withinDevice(periodMs) ? kTimerNoError : kTimerNoCanDo;
}

uint32_t multimediaEndPeriod(uint32_t periodMs) noexcept
{
    return withinDevice(periodMs) ? kTimerNoError : kTimerNoCanDo;
}

uint32_t multimediaTimeMs() noexcept
{
    return posix::monotonicMs();
}

std::unique_ptr<MultimediaTimer> MultimediaTimer::load() noexcept
{
    return std::unique_ptr<MultimediaTimer>(new (std::nothrow) ThreadTimer);
}

}  // namespace tollan::platform
