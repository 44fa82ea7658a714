#include "engine/close_chain.h"

#include "engine/engine_state.h"
#include "engine/step_runner.h"
#include "logger/log.h"
#include "services/lifecycle.h"

namespace tollan::engine {

void CloseRTDll() noexcept
{
    runCleanups(startupSteps(), CleanupPhase::libraries);
    WExitApp();
    runCleanups(startupSteps(), CleanupPhase::protection);
    runCleanups(startupSteps(), CleanupPhase::threadVariables);
    services::lifecycle().closed.store(true);
}

void WExitApp() noexcept
{
    if (!state.asyncProtection) return;
    TOLLAN_LOG(ZOR_LOG_INFO, "mgsource/window", "WExitApp", "exiting app ");
    runCleanups(startupSteps(), CleanupPhase::exitApp);
}

}  // namespace tollan::engine
