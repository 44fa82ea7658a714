#include "platform/posix/deadline.h"

namespace tollan::platform::posix {

namespace {
constexpr long kNanosPerSecond = 1000000000L;
}

int64_t monotonicNowNs() noexcept
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * kNanosPerSecond + now.tv_nsec;
}

timespec monotonicDeadline(uint32_t timeoutMs) noexcept
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    now.tv_sec += static_cast<time_t>(timeoutMs / 1000);
    now.tv_nsec += static_cast<long>(timeoutMs % 1000) * 1000000L;
    if (now.tv_nsec >= kNanosPerSecond) {
        now.tv_nsec -= kNanosPerSecond;
        now.tv_sec += 1;
    }
    return now;
}

uint32_t remainingMs(const timespec &deadline) noexcept
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const int64_t leftNs = (static_cast<int64_t>(deadline.tv_sec) - now.tv_sec) * kNanosPerSecond +
                           (deadline.tv_nsec - now.tv_nsec);
    if (leftNs <= 0) return 0;
    return static_cast<uint32_t>((leftNs + 999999) / 1000000);
}

}  // namespace tollan::platform::posix
