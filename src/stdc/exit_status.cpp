#include "stdc/exit_status.h"

#include <atomic>

namespace tollan::stdc {
namespace {

constinit std::atomic<bool> userBreak{false};

}  // namespace

void recordExitStatus(int32_t status) noexcept
{
    if (status == kExitByUserBreak) userBreak.store(true);
}

bool exitedByUserBreak() noexcept
{
    return userBreak.load();
}

}  // namespace tollan::stdc
