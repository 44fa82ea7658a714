// Breakpoint(): a break the user program asks for.
#include <atomic>

#include <tollan/debugger.h>
#include <tollan/rtcheck.h>

#include "debugger/channel.h"
#include "rtcheck/break_settings.h"
#include "rtcheck/remote_target.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kUserBreakReason = 20;

// Set while a thread stops the remote target: one stop at a time.
std::atomic<bool> targetBreaking{false};

// On a remote target the host learns of the stop through the link's break,
// with the thread's break reason telling it that the program asked for it.
void stopRemoteTarget() noexcept
{
    if (threadReportState().evaluatingCondition != 0) return;
    if (targetBreaking.exchange(true)) return;
    if (ZORThreadEnv *record = __DBG_GetCurrentThreadEnv()) record->breakReason = kUserBreakReason;
    __ZOR_Debug_Break();
    targetBreaking.store(false);
}

}  // namespace
}  // namespace tollan::rtcheck

void Breakpoint(void) noexcept
{
    using namespace tollan;
    if (rtcheck::remoteTargetLink() != nullptr) rtcheck::stopRemoteTarget();
    debugger::breakIntoDebugger();
}
