// Execution contexts: the location block and checking environment of code
// that runs on behalf of another context (a callback run from the library,
// an interrupt routine), saved and restored around it.
#include <cstring>

#include <tollan/debugger.h>

#include "debugger/channel.h"
#include "debugger/debug_control.h"
#include "debugger/events.h"
#include "debugger/runtime_record.h"
#include "debugger/thread_env.h"
#include "logger/log.h"
#include "services/memory.h"
#include "services/messages.h"

namespace tollan::debugger {
namespace {

constexpr int32_t kNoContext = -1;
constexpr int32_t kContexts = 4;
constexpr int32_t kEnvironments = 2;
constexpr int32_t kStackCorruptionMessage = 200;

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

// Until run-time error reporting exists, the report is an ERROR log line with
// message 200 and, under a debugger, a break at the place it was noticed.
void __DBG_ReportStackCorruption(void) noexcept
{
    const ZORThreadEnv *record = existingThreadEnv();
    TOLLAN_LOG(ZOR_LOG_ERROR, "debugger/cdbruntime", "__DBG_ReportStackCorruption", "%s:%d:%d: %s",
               record != nullptr && record->location.fileName != nullptr ? record->location.fileName : "",
               record != nullptr ? static_cast<int>(record->location.line) : 0,
               record != nullptr ? static_cast<int>(record->location.column) : 0,
               tollan::services::libraryMessage(kStackCorruptionMessage));
    breakIntoDebugger();
}
