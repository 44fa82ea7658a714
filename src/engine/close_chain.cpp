#include "engine/close_chain.h"

#include "engine/engine_state.h"
#include "engine/step_runner.h"
#include "logger/log.h"

namespace tollan::engine {

void CloseRTDll() noexcept
{
    runCleanups(CleanupPhase::libraries);
    WExitApp();
    runCleanups(CleanupPhase::protection);
    runCleanups(CleanupPhase::threadVariables);
    state.closed.store(true);
}

void WExitApp() noexcept
{
    if (!state.asyncProtection) return;
    TOLLAN_LOG(ZOR_LOG_INFO, "mgsource/window", "WExitApp", "exiting app ");
    runCleanups(CleanupPhase::exitApp);
}

}  // namespace tollan::engine
