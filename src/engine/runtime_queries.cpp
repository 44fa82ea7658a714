// Small exported queries about the run-time situation.
#include <tollan/engine.h>

#include "platform/system.h"
#include "services/lifecycle.h"

using tollan::services::lifecycle;

void ZORRTDllAbnormalExit(int32_t exitCode) noexcept
{
    lifecycle().exitingAbnormally.store(true);
    tollan::platform::exitProcess(exitCode);
}

int32_t __IsRTEStillLoaded(void) noexcept
{
    return 1;
}

int32_t __SimulateRTShuttingDown(void) noexcept
{
    return lifecycle().simulateShuttingDown.load();
}

int32_t StartupLibraryInit(void) noexcept
{
    return lifecycle().startupLibraryRefused.load() ? 0 : 1;
}

void StartupLibraryCleanup(void) noexcept {}

int32_t InStandaloneExecutable(void) noexcept
{
    return 1;
}

int32_t UsingTollanDll(void) noexcept
{
    return 1;
}

int32_t WhichRuntimeSupportDll(void) noexcept
{
    return 1;
}

// There is no debugger link in this library: no debugger shared memory can be
// attached and no debug interface can say otherwise.
int32_t BeingDebuggedByZOR(void) noexcept
{
    return 0;
}

// The debug interface that would take these registrations comes with the
// debugger link, which this library does not have: nothing is registered.
intptr_t __RegisterAtExitCleanup(intptr_t, intptr_t, intptr_t, intptr_t) noexcept
{
    return 0;
}

intptr_t __UnregisterAtExitCleanup(intptr_t, intptr_t, intptr_t, intptr_t) noexcept
{
    return 0;
}
