// Execution contexts: the location block and checking environment of code
// that runs on behalf of another context (a callback run from the library,
// an interrupt routine), saved and restored around it.
#include <atomic>
#include <cstring>

#include <tollan/debugger.h>

#include "debugger/channel.h"
#include "debugger/debug_control.h"
#include "debugger/error_reporter.h"
#include "debugger/events.h"
#include "debugger/runtime_record.h"
#include "debugger/thread_env.h"
#include "services/memory.h"

namespace tollan::debugger {
namespace {

constexpr int32_t kNoContext = -1;
constexpr int32_t kContexts = 4;
constexpr int32_t kEnvironments = 2;
constexpr int32_t kStackCorruptionMessage = 200;
constexpr int32_t kNonFatal = 2;

std::atomic<RunTimeErrorReporter> runTimeErrorReporter{nullptr};

// Without a run-time record the index lives here instead of in the debugger's control block.
int64_t indexWithoutRuntime = kNoContext;

int64_t &executionContextIndex() noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    return runtime != nullptr ? static_cast<DebugControl *>(runtime->debugControl)->executionContext
                              : indexWithoutRuntime;
}

// -1 ("none") uses the slots of context 0.
int32_t slotOf(int32_t index) noexcept
{
    return index == kNoContext ? 0 : index;
}

}  // namespace
}  // namespace tollan::debugger

using namespace tollan::debugger;

void *__DBG_SaveExecutionContext(void) noexcept
{
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    if (record == nullptr) return nullptr;
    void *block = tollan::services::allocateBlock(sizeof(ZORLocationBlock));
    if (block != nullptr) std::memcpy(block, &record->location, sizeof(ZORLocationBlock));
    return block;
}

void __DBG_RestoreExecutionContext(void *block) noexcept
{
    if (block == nullptr) return;
    if (ZORThreadEnv *record = __DBG_GetCurrentThreadEnv())
        std::memcpy(&record->location, block, sizeof(ZORLocationBlock));
    tollan::services::freeBlock(block);
}

int32_t __SwitchExecutionContext(int32_t index) noexcept
{
    int64_t &currentIndex = executionContextIndex();
    const auto previous = static_cast<int32_t>(currentIndex);
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    if (record == nullptr || index < kNoContext || index >= kContexts) return previous;

    const int32_t from = slotOf(previous);
    const int32_t to = slotOf(index);
    if (previous != kNoContext && previous != index && from < kEnvironments && to < kEnvironments) {
        std::memcpy(record->savedEnvironments[from], record->checkingEnvironment,
                    ZOR_CHECKING_ENVIRONMENT_SIZE);
        std::memcpy(record->checkingEnvironment, record->savedEnvironments[to],
                    ZOR_CHECKING_ENVIRONMENT_SIZE);
    }
    record->savedContexts[from] = record->location;
    record->location = record->savedContexts[to];
    if (index == kNoContext || index == 0) {
        initializeCheckingEnvironment(record->checkingEnvironment);
        record->location = ZORLocationBlock{};
    }
    currentIndex = index;
    // A thread stepping over calls must stop in the context it switched to.
    tellSteppingIntoNewContext();
    return previous;
}

void tollan::debugger::setRunTimeErrorReporter(RunTimeErrorReporter reporter) noexcept
{
    runTimeErrorReporter.store(reporter);
}

void __DBG_ReportStackCorruption(void) noexcept
{
    const RunTimeErrorReporter report = runTimeErrorReporter.load();
    if (report == nullptr) return;
    const ZORThreadEnv *record = existingThreadEnv();
    report(kNonFatal, kStackCorruptionMessage, record != nullptr ? record->location.line : 0,
           record != nullptr ? record->location.column : 0);
}
