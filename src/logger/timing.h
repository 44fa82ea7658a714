// Timing handles: numbered clocks that timing events measure from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>

namespace tollan::logger {

// Microseconds on the performance counter.
using MicrosecondClock = int64_t (*)() noexcept;
int64_t nowMicroseconds() noexcept;
// Replaces the clock that timing handles read (null: the performance
// counter again); returns the one in use before. Lets tests fix the time.
MicrosecondClock setMicrosecondClock(MicrosecondClock clock) noexcept;

// The "[ELAPSED]" text: milliseconds with "%.3f ms" for 0 to 99999 µs and
// "%.2f ms" for anything else.
void formatElapsed(int64_t microseconds, char *buffer, size_t size) noexcept;

inline constexpr uint32_t kLargestTimingHandle = 0x7FFFFFFF;

// The handle given out after `last`: the next number from 1 to
// kLargestTimingHandle, in turn, that inUse(handle) does not claim.
template <typename InUse>
uint32_t nextTimingHandle(uint32_t last, InUse inUse)
{
    uint32_t handle = last;
    do {
        handle = handle >= kLargestTimingHandle ? 1 : handle + 1;
    } while (inUse(handle));
    return handle;
}

class TimingHandles {
public:
    // A new handle starting at `now`; 0 when there is no memory for it.
    uint32_t take(int64_t now) noexcept;
    // The handle's start time; false for a handle not in use.
    bool startOf(uint32_t handle, int64_t *start) const noexcept;
    // Unknown handles are ignored by both.
    void restart(uint32_t handle, int64_t now) noexcept;
    void release(uint32_t handle) noexcept;

private:
    std::map<uint32_t, int64_t> starts_;
    uint32_t last_ = 0;
};

}  // namespace tollan::logger
