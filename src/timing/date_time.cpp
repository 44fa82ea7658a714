// DateStr and TimeStr write into the calling thread's scratch block; without
// one, into a buffer that all threads share.
#include <tollan/utility.h>

#include <cstdarg>
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

// Prints the formatted text into the scratch block between `offset` and `end`
// and returns where it starts.
[[gnu::format(printf, 3, 4)]] char *printToScratch(size_t offset, size_t end, const char *format,
                                                   ...) noexcept
{
    std::unique_lock<platform::RecursiveLock> guard;
    char *text = scratchFor(guard) + offset;
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, end - offset, format, args);
    va_end(args);
    return text;
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
    return printToScratch(timing::kDateOffset, timing::kTimeOffset, "%02d-%02d-%04d", now.month, now.day,
                          now.year);
}

char *TimeStr(void) noexcept
{
    const platform::LocalTime now = localNow();
    return printToScratch(timing::kTimeOffset, timing::kScratchBytes, "%02d:%02d:%02d", now.hour, now.minute,
                          now.second);
}
