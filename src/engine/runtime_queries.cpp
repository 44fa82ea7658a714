// Small exported queries about the run-time situation.
#include <tollan/engine.h>

#include "debugger/channel.h"
#include "debugger/runtime_record.h"
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
    return tollan::debugger::simulateShuttingDownRequested();
}

int32_t StartupLibraryInit(void) noexcept
{
    return tollan::debugger::startupLibraryRefused() ? 0 : 1;
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

int32_t BeingDebuggedByZOR(void) noexcept
{
    return tollan::debugger::sharedInfoBlock() != nullptr ? 1 : 0;
}

// Handed on unchanged, with a fifth argument 0, to the debug interface of the
// run-time record; 0 (not registered) without one.
intptr_t __RegisterAtExitCleanup(intptr_t a, intptr_t b, intptr_t c, intptr_t d) noexcept
{
    tollan::debugger::RuntimeRecord *record = tollan::debugger::runtimeRecord();
    return record != nullptr ? record->registerAtExitCleanup(a, b, c, d, 0) : 0;
}

intptr_t __UnregisterAtExitCleanup(intptr_t a, intptr_t b, intptr_t c, intptr_t d) noexcept
{
    tollan::debugger::RuntimeRecord *record = tollan::debugger::runtimeRecord();
    return record != nullptr ? record->unregisterAtExitCleanup(a, b, c, d, 0) : 0;
}
