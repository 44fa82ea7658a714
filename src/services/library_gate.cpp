#include "services/library_gate.h"

#include "platform/clock.h"
#include "platform/thread.h"

namespace tollan::services {
namespace {

constexpr uint32_t kDefaultShutdownWaitMs = 1000;

std::atomic<uint32_t> waitMs{kDefaultShutdownWaitMs};

}  // namespace

bool LibraryGate::close(uint32_t limitMs) noexcept
{
    state_.fetch_or(kClosed, std::memory_order_acq_rel);
    const uint32_t start = platform::tickCountMs();
    for (uint32_t pause = 0;; pause = pause < 4 ? pause + 1 : pause) {
        if ((state_.load(std::memory_order_acquire) & ~kClosed) == 0) return true;
        if (platform::tickCountMs() - start >= limitMs) return false;
        // Calls that are merely busy leave within microseconds; one that
        // waits for input may take the whole limit.
        platform::sleepMs(pause);
    }
}

uint32_t shutdownWaitMs() noexcept
{
    return waitMs.load(std::memory_order_relaxed);
}

void setShutdownWaitMs(uint32_t ms) noexcept
{
    waitMs.store(ms, std::memory_order_relaxed);
}

}  // namespace tollan::services
