#include "engine/dll_entry.h"

#include <climits>

#include "engine/close_chain.h"
#include "engine/engine_state.h"
#include "engine/step_runner.h"
#include "logger/log.h"
#include "debugger/library.h"
#include "engine/detached_marker.h"
#include "platform/shared_memory.h"
#include "platform/system.h"
#include "platform/thread.h"
#include "platform/tls.h"
#include "services/library_gate.h"
#include "services/lifecycle.h"
#include "services/thread_var_scheme.h"
#include "services/thread_vars.h"

namespace tollan::engine {
namespace {

constexpr TraceSite kDllMain{ZOR_LOG_DLLMAIN, "mgsource/window", "DllMain"};

// How many named objects of ended processes start-up examines at most:
// enough to keep up with killed programs, few enough to keep start-up fast
// however many there are. Shutdown, where the time matters less, examines
// them all: every child of fork() that ended without the library's shutdown
// (it called exec or _exit) left a marker of its own.
constexpr int kStartupSweep = 32;
constexpr int kShutdownSweep = INT_MAX;

// A child of fork() that uses the library names its objects after its own
// process id; the parent's stay the parent's.
void afterFork() noexcept
{
    if (services::lifecycle().initialised.load() && !services::lifecycle().detaching.load())
        SetupZORRTEHasBeenDetachedShmem();
}

int32_t returning(int32_t result) noexcept
{
    TOLLAN_LOG(kDllMain.level, kDllMain.module, kDllMain.function, "Returning %d", result);
    return result;
}

}  // namespace

int32_t processAttach(void *moduleInstance) noexcept
{
    services::lifecycle().moduleInstance = moduleInstance;
    platform::removeStaleNamedObjects(kStartupSweep);
    platform::setForkChildHandler(afterFork);
    ConfigureZORLoggerOnce();
    TOLLAN_LOG(kDllMain.level, kDllMain.module, kDllMain.function, "DLL_PROCESS_ATTACH");
    if (const StartupStep *failed = runStage(startupSteps(), Stage::processAttach, kDllMain)) {
        if (failed->onFailure == AttachFailure::closeAndRefuse) CloseRTDll();
        return returning(0);
    }
    services::lifecycle().initialised.store(true);
    return returning(1);
}

int32_t processDetach(bool othersStopped) noexcept
{
    TOLLAN_LOG(kDllMain.level, kDllMain.module, kDllMain.function, "DLL_PROCESS_DETACH");
    services::lifecycle().detaching.store(true);
    if (othersStopped) services::setShutdownWaitMs(0);
    if (services::lifecycle().initialised.load()) {
        CloseRTDll();
        TOLLAN_LOG(kDllMain.level, kDllMain.module, kDllMain.function, "CloseRTDll returned");
    }
    runCleanups(startupSteps(), CleanupPhase::afterClose);
    platform::stopThreadExitNotifications();
    platform::removeStaleNamedObjects(kShutdownSweep);
    return returning(1);
}

int32_t threadDetach() noexcept
{
    TOLLAN_LOG(kDllMain.level, kDllMain.module, kDllMain.function, "DLL_THREAD_DETACH: thread %d",
               static_cast<int>(platform::currentThreadId()));
    debugger::threadEnds();
    if (services::threadHasBlock()) runThreadCleanups(startupSteps());
    // Released again whether or not the thread had thread variables.
    debugger::releaseThreadState();
    services::threadVars().freeThreadBlock();
    return returning(1);
}

}  // namespace tollan::engine
