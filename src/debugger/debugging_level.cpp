#include "debugger/debugging_level.h"

#include <atomic>
#include <cstdlib>

#include <tollan/debugger.h>

namespace tollan::debugger {
namespace {

std::atomic<int32_t> level{0};

}  // namespace

int32_t debuggingLevel() noexcept
{
    return level.load(std::memory_order_relaxed);
}

void readDebuggingLevelFromEnvironment() noexcept
{
    const char *text = std::getenv("TOLLAN_DEBUG_LEVEL");
    const bool valid = text != nullptr && text[0] >= '0' && text[0] <= '3' && text[1] == '\0';
    level.store(valid ? text[0] - '0' : 0);
}

}  // namespace tollan::debugger

int32_t __SetDebuggingLevel(int32_t newLevel) noexcept
{
    if (newLevel < 0 || newLevel > 3) return -1;
    return tollan::debugger::level.exchange(newLevel);
}

int32_t __GetDebuggingLevel(void) noexcept
{
    return tollan::debugger::debuggingLevel();
}
