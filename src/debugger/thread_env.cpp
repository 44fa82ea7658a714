// The thread-state record of each thread and the exported operations that
// compiled debug code calls around every function and statement.
#include "debugger/thread_env.h"

#include <atomic>
#include <cstddef>
#include <cstring>

#include "debugger/runtime_record.h"
#include "services/memory.h"
#include "services/thread_record.h"

namespace tollan::debugger {

// The debugger reads these offsets from the stopped program.
static_assert(sizeof(ZORThreadEnv) == 7808);
static_assert(sizeof(ZORLocationBlock) == 88);
static_assert(sizeof(ZORFunctionFrame) == 48);
static_assert(offsetof(ZORThreadEnv, savedEnvironments) == 2112);
static_assert(offsetof(ZORThreadEnv, vaArgInfo) == 6336);
static_assert(offsetof(ZORThreadEnv, location) + offsetof(ZORLocationBlock, line) == 6352);
static_assert(offsetof(ZORThreadEnv, location) + offsetof(ZORLocationBlock, column) == 6356);
static_assert(offsetof(ZORThreadEnv, location) + offsetof(ZORLocationBlock, fileName) == 6360);
static_assert(offsetof(ZORThreadEnv, location) + offsetof(ZORLocationBlock, frame) == 6408);
static_assert(offsetof(ZORThreadEnv, location) + offsetof(ZORLocationBlock, functionWord) == 6432);
static_assert(offsetof(ZORThreadEnv, savedContexts) == 6440);
static_assert(offsetof(ZORThreadEnv, breakReason) == 6816);
static_assert(offsetof(ZORThreadEnv, breakDetail) == 6824);

namespace {

std::atomic<CheckingEnvironmentInitializer> checkingInitializer{nullptr};

// The run-time record's spare, when this module makes the record.
constinit ZORThreadEnv spareRecord{};
// Used when there is no run-time record at all.
constinit ZORThreadEnv recordWithoutRuntime{};

bool takeSpare(RuntimeRecord *runtime) noexcept
{
    uint32_t expected = 0;
    return runtime->spareThreadEnv != nullptr &&
           std::atomic_ref<uint32_t>(runtime->spareTaken).compare_exchange_strong(expected, 1);
}

// The library's per-thread debugger data (the safe call's recovery point).
constinit services::ThreadRecordSlot executionSlot;

ZORThreadEnv *currentThreadEnv(bool mayUseSpare) noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    if (runtime == nullptr) return &recordWithoutRuntime;
    if (auto *existing = static_cast<ZORThreadEnv *>(runtime->threadValue(runtime->threadEnvIndex)))
        return existing;
    ZORThreadEnv *record = runtime->newThreadEnv();
    if (record == nullptr) {
        if (!mayUseSpare || !takeSpare(runtime)) return nullptr;
        record = runtime->spareThreadEnv;
        resetThreadEnv(record);
    }
    if (!runtime->setThreadValue(runtime->threadEnvIndex, record)) {
        runtime->releaseThreadEnv(record);
        return nullptr;
    }
    registerCurrentThread(record);
    return record;
}

}  // namespace

void setCheckingEnvironmentInitializer(CheckingEnvironmentInitializer initializer) noexcept
{
    checkingInitializer.store(initializer);
}

void initializeCheckingEnvironment(void *environment) noexcept
{
    if (auto initializer = checkingInitializer.load())
        initializer(environment);
    else
        std::memset(environment, 0, ZOR_CHECKING_ENVIRONMENT_SIZE);
}

void resetThreadEnv(ZORThreadEnv *record) noexcept
{
    std::memset(record, 0, sizeof *record);
    if (runtimeRecord() != nullptr) initializeCheckingEnvironment(record->checkingEnvironment);
    for (auto &saved : record->savedEnvironments)
        std::memcpy(saved, record->checkingEnvironment, sizeof record->checkingEnvironment);
    // A new thread tracks resources unless it says otherwise.
    record->trackResources = 1;
}

ZORThreadEnv *newThreadEnv() noexcept
{
    auto *record = static_cast<ZORThreadEnv *>(services::allocateBlock(sizeof(ZORThreadEnv)));
    if (record != nullptr) resetThreadEnv(record);
    return record;
}

void releaseThreadEnv(void *record) noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    if (runtime != nullptr && record == runtime->spareThreadEnv)
        std::atomic_ref<uint32_t>(runtime->spareTaken).store(0);
    else if (record != &recordWithoutRuntime)
        services::freeBlock(record);
}

ZORThreadEnv *ownSpareThreadEnv() noexcept
{
    return &spareRecord;
}

ZORThreadEnv *existingThreadEnv() noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    if (runtime == nullptr) return nullptr;
    return static_cast<ZORThreadEnv *>(runtime->threadValue(runtime->threadEnvIndex));
}

void releaseCurrentThreadEnv() noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    if (runtime == nullptr) return;
    void *record = runtime->threadValue(runtime->threadEnvIndex);
    if (record == nullptr) return;
    runtime->setThreadValue(runtime->threadEnvIndex, nullptr);
    unregisterCurrentThread();
    runtime->releaseThreadEnv(record);
}

bool InitExecutionThreadVars() noexcept
{
    return executionSlot.reserve();
}

void releaseExecutionThreadVars() noexcept
{
    executionSlot.release();
}

void freeExecutionThreadData() noexcept
{
    executionSlot.freeRecord();
}

}  // namespace tollan::debugger

using namespace tollan::debugger;

ZORThreadEnv *__DBG_GetCurrentThreadEnv(void) noexcept
{
    return currentThreadEnv(true);
}

ZORThreadEnv *__GetThreadEnvironmentForCurrentThread(void) noexcept
{
    return currentThreadEnv(false);
}

void *__GetLocalThreadEnvSlot(uint32_t *index) noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    if (runtime != nullptr && index != nullptr) *index = static_cast<uint32_t>(runtime->threadEnvIndex);
    return runtime;
}

void __DBG_ResetCurrentThreadEnv(void) noexcept
{
    if (ZORThreadEnv *record = __DBG_GetCurrentThreadEnv()) resetThreadEnv(record);
}

int32_t __DBG_EnterFunctionInCurrentThreadEnv(ZORThreadEnv *record, ZORFunctionFrame *frame,
                                              const char *fileName) noexcept
{
    if (record == nullptr || frame == nullptr) return -1;
    ZORLocationBlock &location = record->location;
    frame->savedFileName = location.fileName;
    frame->savedLine = location.line;
    frame->savedColumn = location.column;
    frame->savedFrame = location.frame;
    frame->savedFunctionWord = location.functionWord;
    location.functionWord = 0;
    location.line = 0;
    location.column = 0;
    location.frame = frame;
    location.fileName = fileName;
    return 0;
}

void __DBG_LeaveFunctionInCurrentThreadEnv(ZORThreadEnv *record, ZORFunctionFrame *frame) noexcept
{
    if (record == nullptr || frame == nullptr) return;
    ZORLocationBlock &location = record->location;
    location.fileName = frame->savedFileName;
    location.line = frame->savedLine;
    location.column = frame->savedColumn;
    location.frame = frame->savedFrame;
    location.functionWord = frame->savedFunctionWord;
}

void __DBG_SetCurrentThreadEnvPosition(ZORThreadEnv *record, int32_t *location, int32_t line,
                                       int32_t column) noexcept
{
    if (record == nullptr) return;
    record->location.line = line;
    record->location.column = column;
    if (location != nullptr) {
        location[2] = line;
        location[3] = column;
    }
}

void __DBG_SetCurrentThreadEnvLocation(ZORThreadEnv *record, int32_t *location, const char *fileName,
                                       int32_t line, int32_t column) noexcept
{
    if (record == nullptr) return;
    record->location.fileName = fileName;
    __DBG_SetCurrentThreadEnvPosition(record, location, line, column);
}

void __DBG_SetCurrentThreadEnvFileName(ZORThreadEnv *record, const char *fileName) noexcept
{
    if (record != nullptr) record->location.fileName = fileName;
}
