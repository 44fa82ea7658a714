#include "engine/frame_steps.h"

#include <tollan/rtcheck.h>

#include "debugger/error_reporter.h"
#include "debugger/library.h"
#include "engine/engine_state.h"
#include "engine/host_module.h"
#include "platform/thread.h"
#include "rtcheck/library.h"
#include "services/lifecycle.h"
#include "stdc/exit_status.h"
#include "stdc/locks.h"

namespace tollan::engine {

bool QXInitMainThreadId() noexcept
{
    services::lifecycle().mainThreadId = platform::currentThreadId();
    return true;
}

bool rememberHostModule() noexcept
{
    if (hostModule().remember()) return true;
    services::setStartupFailure();
    return false;
}

bool initializeDebugLink() noexcept
{
    if (debugger::ZORDebugInitialize()) return true;
    services::setStartupFailure();
    return false;
}

bool initializeDebugChannel() noexcept
{
    if (debugger::CdbInitialize()) return true;
    services::setStartupFailure();
    return false;
}

bool startRunTimeChecking() noexcept
{
    debugger::setRunTimeErrorReporter(ReportUPError);
    return rtcheck::InitRTEBasicTypes();
}

bool InitAsyncAndMTProtection() noexcept
{
    if (!stdc::createSharedLocks()) return false;
    state.asyncProtection = true;
    return true;
}

void endAsyncProtection() noexcept
{
    stdc::releaseSharedLocks();
    state.asyncProtection = false;
}

void recordExitStatus() noexcept
{
    stdc::recordExitStatus(services::lifecycle().endedByUserBreak.load() ? stdc::kExitByUserBreak
                                                                         : stdc::kExitNormal);
}

bool markRuntimeLibrariesReady() noexcept
{
    state.runtimeLibrariesReady = true;
    return true;
}

}  // namespace tollan::engine
