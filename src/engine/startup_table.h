// The start-up chain as data. Each subsystem contributes rows: an init-once
// operation run at process attach, a clean-up run at process detach and a
// per-thread clean-up run at thread detach. The chain functions (DllMain,
// WInitApp, WMain, CloseRTDll, WExitApp) walk the rows of their stage; the
// rows themselves live in startup_table.cpp.
#pragma once

#include <cstdint>
#include <span>

namespace tollan::engine {

// Which function of the chain runs a row, in row order.
enum class Stage : uint8_t {
    processAttach,     // DllMain, after the logger; DLLMAIN-level traces
    initApp,           // WInitApp; TRACE-level traces
    runtimeLibraries,  // WMain, after the logger's second configuration; TRACE-level traces
};

// What a failed processAttach row does to the attach (the loader then refuses
// the library).
enum class AttachFailure : uint8_t {
    refuse,          // fail the attach at once, nothing undone
    closeAndRefuse,  // run CloseRTDll first
};

// When a row's clean-up runs during process detach.
enum class CleanupPhase : uint8_t {
    none,
    libraries,        // CloseRTDll, first: the run-time libraries
    exitApp,          // WExitApp: only when the async protection was set up
    protection,       // CloseRTDll: undoing the async protection, in initialisation order
    threadVariables,  // CloseRTDll, last: the library's own thread-variable slot
    afterClose,       // process detach after CloseRTDll, even when the attach failed
};

// Positions within a clean-up phase (ascending). Shutdown does not simply
// reverse start-up, so every row states where it belongs.
namespace cleanup_rank {
// CloseRTDll's library clean-ups, after the exit status is recorded.
inline constexpr uint8_t exitStatus = 0;
inline constexpr uint8_t threadStates = 10;
inline constexpr uint8_t cLibrary = 20;
inline constexpr uint8_t utility = 30;
inline constexpr uint8_t fmtio = 40;
// WExitApp.
inline constexpr uint8_t timerResolution = 10;
inline constexpr uint8_t debuggerSide = 20;
inline constexpr uint8_t debugChannel = 30;
inline constexpr uint8_t exitingThreadState = 35;
inline constexpr uint8_t threadSynchronisation = 40;
inline constexpr uint8_t remoteLink = 50;
inline constexpr uint8_t rs232 = 60;
// The async protection's own flag goes after every lock it covers; the
// thread-state records' index goes after that.
inline constexpr uint8_t asyncProtectionFlag = 100;
inline constexpr uint8_t threadEnvironmentIndex = 110;
}  // namespace cleanup_rank

// Positions of the per-thread clean-ups at thread detach (ascending).
namespace thread_cleanup_rank {
inline constexpr uint8_t utility = 10;
inline constexpr uint8_t rs232 = 20;
inline constexpr uint8_t fmtio = 30;
inline constexpr uint8_t cLibrary = 40;
inline constexpr uint8_t threadState = 50;
inline constexpr uint8_t librarySlot = 60;
}  // namespace thread_cleanup_rank

struct Cleanup {
    CleanupPhase phase = CleanupPhase::none;
    uint8_t rank = 0;
    void (*run)() noexcept = nullptr;
    const char *trace = nullptr;  // written after run, DLLMAIN level in afterClose, else TRACE
};

// Runs at thread detach, only for a thread that has a block of thread variables.
struct ThreadCleanup {
    uint8_t rank = 0;
    void (*run)() noexcept = nullptr;
};

struct StartupStep {
    const char *name;
    Stage stage;
    bool (*initOnce)() noexcept = nullptr;  // false: the step failed; null: a row with a clean-up only
    const char *trace = nullptr;            // written after a successful initOnce
    // initApp and runtimeLibraries: the stage's result when initOnce fails;
    // 0 means that a failure does not stop the chain.
    int32_t failureCode = 0;
    AttachFailure onFailure = AttachFailure::refuse;  // processAttach only
    Cleanup cleanup = {};
    ThreadCleanup threadCleanup = {};
};

// The init-once of a step whose operation cannot fail.
template <void (*operation)() noexcept>
bool cannotFail() noexcept
{
    operation();
    return true;
}

// Every row, in start-up order.
std::span<const StartupStep> startupSteps() noexcept;

// Result codes the stages use.
inline constexpr int32_t kDebugLinkFailed = 91;      // WInitApp
inline constexpr int32_t kTimeSettingsFailed = 2;    // WInitApp
inline constexpr int32_t kTimeLibraryFailed = -102;  // WMain
inline constexpr int32_t kLibraryInitFailed = -103;  // WMain

}  // namespace tollan::engine
