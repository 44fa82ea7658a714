// WInitApp and WMain: the application stages, each a walk over its rows of
// the start-up table.
#include "engine/engine_state.h"
#include "engine/init_chain.h"
#include "engine/step_runner.h"
#include "logger/log.h"
#include "stdc/exit_context.h"

namespace tollan::engine {

// No step reads the host's arguments yet; they are handed over as a
// program's start-up code would hand them.
int32_t WInitApp([[maybe_unused]] int argc, [[maybe_unused]] char **argv) noexcept
{
    constexpr TraceSite site{ZOR_LOG_TRACE, "mgsource/window", "WInitApp"};
    const StartupStep *failed = runStage(startupSteps(), Stage::initApp, site);
    const int32_t result = failed != nullptr ? failed->failureCode : 0;
    if (result == 0) {
        // The application name is also used as a C string.
        state.applicationName[state.applicationName[0] + 1] = '\0';
    }
    TOLLAN_LOG(site.level, site.module, site.function, "Returning %d.", result);
    return result;
}

int32_t WMain() noexcept
{
    constexpr TraceSite site{ZOR_LOG_TRACE, "qwcompat/wmain", "WMain"};
    state.startupTimingHandle = GetZORLogTimingHandle();
    ConfigureZORLoggerOnce();
    TOLLAN_LOG(site.level, site.module, site.function, "ConfigureZORLoggerOnce returned");
    TOLLAN_LOG(site.level, site.module, site.function, "ENTER");

    const StartupStep *failed = runStage(startupSteps(), Stage::runtimeLibraries, site);
    int32_t result = failed != nullptr ? failed->failureCode : 0;
    if (result == 0) {
        // The exit resumption context: an exit while start-up still runs
        // comes back here with its code as the result.
        result = setjmp(stdc::exitResumptionContext());
        if (result == 0) stdc::armExitResumption();
    }
    stdc::disarmExitResumption();
    TOLLAN_LOG(site.level, site.module, site.function, "Cleanup code: error = %d", result);
    TOLLAN_LOG(site.level, site.module, site.function, "Returning %d", result);
    return result;
}

}  // namespace tollan::engine
