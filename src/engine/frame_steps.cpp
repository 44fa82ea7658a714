#include "engine/frame_steps.h"

#include "engine/engine_state.h"
#include "engine/host_module.h"
#include "platform/thread.h"
#include "services/lifecycle.h"

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

bool InitAsyncAndMTProtection() noexcept
{
    state.asyncProtection = true;
    return true;
}

void endAsyncProtection() noexcept
{
    state.asyncProtection = false;
}

bool markRuntimeLibrariesReady() noexcept
{
    state.runtimeLibrariesReady = true;
    return true;
}

}  // namespace tollan::engine
