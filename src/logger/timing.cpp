#include "logger/timing.h"

#include <atomic>
#include <cstdio>
#include <new>

#include "platform/clock.h"

namespace tollan::logger {

namespace {

int64_t performanceCounterMicroseconds() noexcept
{
    int64_t frequency = 0;
    int64_t count = 0;
    if (!platform::performanceFrequency(&frequency) || frequency <= 0 ||
        !platform::performanceCounter(&count))
        return 0;
    // Split so that count * 10^6 cannot overflow.
    return count / frequency * 1000000 + count % frequency * 1000000 / frequency;
}

std::atomic<MicrosecondClock> currentClock{performanceCounterMicroseconds};

}  // namespace

int64_t nowMicroseconds() noexcept
{
    return currentClock.load(std::memory_order_relaxed)();
}

MicrosecondClock setMicrosecondClock(MicrosecondClock clock) noexcept
{
    return currentClock.exchange(clock ? clock : performanceCounterMicroseconds);
}

void formatElapsed(int64_t microseconds, char *buffer, size_t size) noexcept
{
    double milliseconds = static_cast<double>(microseconds) / 1000.0;
    if (microseconds >= 0 && microseconds <= 99999)
        std::snprintf(buffer, size, "%.3f ms", milliseconds);
    else
        std::snprintf(buffer, size, "%.2f ms", milliseconds);
}

uint32_t TimingHandles::take(int64_t now) noexcept
{
    uint32_t handle = nextTimingHandle(last_, [this](uint32_t h) { return starts_.count(h) != 0; });
    try {
        starts_.emplace(handle, now);
    } catch (const std::bad_alloc &) {
        return 0;
    }
    last_ = handle;
    return handle;
}

bool TimingHandles::startOf(uint32_t handle, int64_t *start) const noexcept
{
    auto found = starts_.find(handle);
    if (found == starts_.end()) return false;
    *start = found->second;
    return true;
}

void TimingHandles::restart(uint32_t handle, int64_t now) noexcept
{
    auto found = starts_.find(handle);
    if (found != starts_.end()) found->second = now;
}

void TimingHandles::release(uint32_t handle) noexcept
{
    starts_.erase(handle);
}

}  // namespace tollan::logger
