// DateStr and TimeStr write into the calling thread's scratch block; without
// one, into a buffer that all threads share.
#include <tollan/utility.h>

#include <cstdio>
#include <mutex>

#include "platform/clock.h"
#include "timing/locks.h"
#include "timing/scratch.h"

using namespace tollan;

namespace {

char sharedScratch[timing::kScratchBytes];

// The block to write to. The shared one is written under its lock, which
// `sharedGuard` then holds.
char *scratchFor(std::unique_lock<platform::RecursiveLock> &sharedGuard) noexcept
{
    if (char *block = timing::threadScratch()) return block;
    sharedGuard = std::unique_lock(timing::sharedScratchLock());
    return sharedScratch;
}

platform::LocalTime localNow() noexcept
{
    platform::LocalTime now{};
    platform::localTime(&now);
    return now;
}

}  // namespace

char *DateStr(void) noexcept
{
    const platform::LocalTime now = localNow();
    std::unique_lock<platform::RecursiveLock> guard;
    char *date = scratchFor(guard) + timing::kDateOffset;
    std::snprintf(date, timing::kTimeOffset - timing::kDateOffset, "%02d-%02d-%04d", now.month, now.day,
                  now.year);
    return date;
}

char *TimeStr(void) noexcept
{
    const platform::LocalTime now = localNow();
    std::unique_lock<platform::RecursiveLock> guard;
    char *time = scratchFor(guard) + timing::kTimeOffset;
    std::snprintf(time, timing::kScratchBytes - timing::kTimeOffset, "%02d:%02d:%02d", now.hour, now.minute,
                  now.second);
    return time;
}
