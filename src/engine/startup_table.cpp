// The rows of the start-up chain, in start-up order.
//
// Adding a subsystem: declare its operations (noexcept) in its own header,
// include it here and add one row where its step belongs, for example
//
//     {.name = "FmtIOLibInitOnce",
//      .stage = Stage::runtimeLibraries,
//      .initOnce = fmtio::FmtIOLibInitOnce,
//      .trace = "FmtIOLibInitOnce returned",
//      .failureCode = kLibraryInitFailed,
//      .cleanup = {CleanupPhase::libraries, cleanup_rank::fmtio, fmtio::FmtIOLibCleanup},
//      .threadCleanup = {thread_cleanup_rank::fmtio, fmtio::FmtIOLibThreadCleanup}},
//
// A step whose operation returns nothing (it cannot fail) is wrapped:
//     .initOnce = cannotFail<timing::SetupPCTimer>,
// Fields left out mean: no trace, a failure does not stop the chain, no
// clean-up, no per-thread clean-up. A row without initOnce has a clean-up
// only (the exit status recorded at shutdown). Shutdown and thread detach do not follow
// the row order; they follow the phases and ranks of startup_table.h.
#include "engine/startup_table.h"

#include "engine/detached_marker.h"
#include "engine/frame_steps.h"
#include "engine/init_chain.h"
#include "engine/library_slot.h"
#include "debugger/library.h"
#include "fmtio/library.h"
#include "rs232/library.h"
#include "services/character_classes.h"
#include "services/memory.h"
#include "stdc/code_page.h"
#include "stdc/library.h"
#include "stdc/time_options.h"
#include "stdc/time_zone.h"
#include "support/list_allocator.h"
#include "timing/library.h"

namespace tollan::engine {
namespace {

constexpr StartupStep kSteps[] = {
    // --- DllMain -------------------------------------------------------
    {.name = "AllocCrossLibraryThreadVarSlots",
     .stage = Stage::processAttach,
     .initOnce = AllocCrossLibraryThreadVarSlots,
     .trace = "AllocCrossLibraryThreadVarSlots returned",
     .onFailure = AttachFailure::refuse,
     .cleanup = {CleanupPhase::threadVariables, 0, releaseCrossLibraryThreadVarSlots},
     .threadCleanup = {thread_cleanup_rank::librarySlot, freeLibrarySlotValue}},
    {.name = "InitRTDll",
     .stage = Stage::processAttach,
     .initOnce = InitRTDll,
     .trace = "InitRTDll returned",
     .onFailure = AttachFailure::closeAndRefuse},
    {.name = "SetupZORRTEHasBeenDetachedShmem",
     .stage = Stage::processAttach,
     .initOnce = SetupZORRTEHasBeenDetachedShmem,
     .trace = "SetupZORRTEHasBeenDetachedShmem returned",
     .onFailure = AttachFailure::closeAndRefuse,
     .cleanup = {CleanupPhase::afterClose, 0, CleanupZORRTEHasBeenDetachedShmem,
                 "CleanupZORRTEHasBeenDetachedShmem returned"}},
    {.name = "InitRTEBasicTypes",
     .stage = Stage::processAttach,
     .initOnce = startRunTimeChecking,
     .trace = "InitRTEBasicTypes returned",
     .onFailure = AttachFailure::refuse},

    // --- WInitApp ------------------------------------------------------
    {.name = "QXInitMainThreadId",
     .stage = Stage::initApp,
     .initOnce = QXInitMainThreadId,
     .trace = "QXInitMainThreadId returned"},
    {.name = "SetUpMemory",
     .stage = Stage::initApp,
     .initOnce = services::SetUpMemory,
     .trace = "SetUpMemory returned"},
    {.name = "InitializeCodePage",
     .stage = Stage::initApp,
     .initOnce = cannotFail<stdc::InitializeCodePage>,
     .trace = "InitializeCodePage returned"},
    {.name = "InitSupport",
     .stage = Stage::initApp,
     .initOnce = services::InitSupport,
     .trace = "InitSupport returned"},
    {.name = "InstallDefaultListAllocator",
     .stage = Stage::initApp,
     .initOnce = cannotFail<support::installDefaultListAllocator>},
    {.name = "ZORDebugInitialize",
     .stage = Stage::initApp,
     .initOnce = initializeDebugLink,
     .failureCode = kDebugLinkFailed,
     .cleanup = {CleanupPhase::exitApp, cleanup_rank::threadSynchronisation,
                 debugger::closeThreadSynchronisation}},
    {.name = "HostModule",
     .stage = Stage::initApp,
     .initOnce = rememberHostModule,
     .trace = "ZORDebugInitialize returned",
     .failureCode = kDebugLinkFailed},
    {.name = "CdbInitialize",
     .stage = Stage::initApp,
     .initOnce = initializeDebugChannel,
     .trace = "CdbInitialize returned",
     .failureCode = kDebugLinkFailed,
     .cleanup = {CleanupPhase::exitApp, cleanup_rank::debuggerSide, debugger::closeDebuggerSide}},
    // Clean-ups only: the debug channel, the record of the thread that ends
    // the process (no thread detach comes for it), and the thread-state
    // records' index once the async protection is undone.
    {.name = "DebugChannel",
     .stage = Stage::initApp,
     .cleanup = {CleanupPhase::exitApp, cleanup_rank::debugChannel, debugger::disconnectChannel}},
    {.name = "ExitingThreadState",
     .stage = Stage::initApp,
     .cleanup = {CleanupPhase::exitApp, cleanup_rank::exitingThreadState,
                 debugger::releaseExitingThreadState}},
    {.name = "ThreadEnvironmentIndex",
     .stage = Stage::initApp,
     .cleanup = {CleanupPhase::protection, cleanup_rank::threadEnvironmentIndex,
                 debugger::freeThreadEnvIndex}},
    {.name = "SetupPCTimer",
     .stage = Stage::initApp,
     .initOnce = cannotFail<timing::SetupPCTimer>,
     .trace = "SetupPCTimer returned. Changed timer resolution.",
     .cleanup = {CleanupPhase::exitApp, cleanup_rank::timerResolution, timing::RestorePCTimer}},
    {.name = "InitAsyncAndMTProtection",
     .stage = Stage::initApp,
     .initOnce = InitAsyncAndMTProtection,
     .trace = "InitAsyncAndMTProtection returned",
     .failureCode = kDebugLinkFailed,
     .cleanup = {CleanupPhase::protection, cleanup_rank::asyncProtectionFlag, endAsyncProtection}},
    {.name = "GetTimeOptions/GetDateOptions",
     .stage = Stage::initApp,
     .initOnce = stdc::GetTimeAndDateOptions,
     .trace = "GetTimeOptions/GetDateOptions returned.",
     .failureCode = kTimeSettingsFailed},

    // --- WMain ---------------------------------------------------------
    {.name = "InitTimeLib",
     .stage = Stage::runtimeLibraries,
     .initOnce = stdc::InitTimeLib,
     .trace = "InitTimeLib returned",
     .failureCode = kTimeLibraryFailed},
    {.name = "StdCLibInitOnce",
     .stage = Stage::runtimeLibraries,
     .initOnce = stdc::StdCLibInitOnce,
     .trace = "StdCLibInitOnce returned",
     .failureCode = kLibraryInitFailed,
     .cleanup = {CleanupPhase::libraries, cleanup_rank::cLibrary, stdc::StdCLibCleanup}},
    {.name = "InitExecutionThreadVars",
     .stage = Stage::runtimeLibraries,
     .initOnce = debugger::InitExecutionThreadVars,
     .trace = "InitExecutionThreadVars returned",
     .failureCode = kLibraryInitFailed,
     .cleanup = {CleanupPhase::libraries, cleanup_rank::threadStates, debugger::releaseExecutionThreadVars},
     .threadCleanup = {thread_cleanup_rank::threadState, debugger::releaseThreadState}},
    {.name = "FmtIOLibInitOnce",
     .stage = Stage::runtimeLibraries,
     .initOnce = fmtio::FmtIOLibInitOnce,
     .trace = "FmtIOLibInitOnce returned",
     .failureCode = kLibraryInitFailed,
     .cleanup = {CleanupPhase::libraries, cleanup_rank::fmtio, fmtio::FmtIOLibCleanup},
     .threadCleanup = {thread_cleanup_rank::fmtio, fmtio::FmtIOLibThreadCleanup}},
    {.name = "UtilityLibraryInitOnce",
     .stage = Stage::runtimeLibraries,
     .initOnce = timing::UtilityLibraryInitOnce,
     .trace = "UtilityLibraryInitOnce returned",
     .failureCode = kLibraryInitFailed,
     .cleanup = {CleanupPhase::libraries, cleanup_rank::utility, timing::UtilityLibraryCleanup},
     .threadCleanup = {thread_cleanup_rank::utility, timing::UtilityLibraryThreadCleanup}},
    {.name = "RuntimeLibrariesReady",
     .stage = Stage::runtimeLibraries,
     .initOnce = markRuntimeLibrariesReady},
    // Only a clean-up: the first step of shutdown.
    {.name = "RecordExitStatus",
     .stage = Stage::runtimeLibraries,
     .cleanup = {CleanupPhase::libraries, cleanup_rank::exitStatus, recordExitStatus}},
    {.name = "RegisterUtilityLibraryRunStateChangeCallback",
     .stage = Stage::runtimeLibraries,
     .initOnce = timing::RegisterUtilityLibraryRunStateChangeCallback,
     .trace = "RegisterUtilityLibraryRunStateChangeCallback returned"},
    {.name = "QXRS232Initialize",
     .stage = Stage::runtimeLibraries,
     .initOnce = rs232::QXRS232Initialize,
     .trace = "QXRS232Initialize returned",
     .cleanup = {CleanupPhase::exitApp, cleanup_rank::rs232, rs232::QXRS232Shutdown},
     .threadCleanup = {thread_cleanup_rank::rs232, rs232::QXRS232ThreadCleanup}},
};

}  // namespace

std::span<const StartupStep> startupSteps() noexcept
{
    return kSteps;
}

}  // namespace tollan::engine
