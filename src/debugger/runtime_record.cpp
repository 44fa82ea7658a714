#include "debugger/runtime_record.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "debugger/at_exit.h"
#include "debugger/debug_control.h"
#include "debugger/mappings.h"
#include "debugger/resource_table.h"
#include "debugger/thread_env.h"
#include "logger/log.h"
#include "platform/dynamic_library.h"
#include "platform/event.h"
#include "platform/thread.h"
#include "platform/tls.h"
#include "services/lifecycle.h"
#include "services/memory.h"

namespace tollan::debugger {
namespace {

constexpr const char *kModule = "debugger/cdbruntime";
constexpr const char *kMutexBase = "Vantrel - ZOR Runtime Info Mutex";
constexpr const char *kMappingBase = "Vantrel - ZOR Runtime Info Shared Memory";
constexpr int32_t kNoMutex = -102;
constexpr int32_t kNoResources = -103;

// The record as every module knows it, the one this module would own, and
// the objects this module holds to reach it.
std::atomic<RuntimeRecord *> current{nullptr};
alignas(16) unsigned char ownRecordStorage[1064];
static_assert(sizeof(RuntimeRecord) <= sizeof ownRecordStorage);
constinit DebugControl ownControl{};
bool owner = false;
// The index this module allocated, freed after the record is closed.
platform::TlsIndex ownedIndex = 0;
bool indexOwned = false;
platform::NamedMutex *mutex = nullptr;
platform::SharedMemory *mapping = nullptr;
void *keptOwnerModule = nullptr;

void name(char *buffer, size_t size, const char *base) noexcept
{
    std::snprintf(buffer, size, "%s%x", base, platform::currentProcessId());
}

void *threadValue(uint64_t index) noexcept
{
    return platform::tlsGet(static_cast<platform::TlsIndex>(index));
}

bool setThreadValue(uint64_t index, void *value) noexcept
{
    if (!platform::tlsSet(static_cast<platform::TlsIndex>(index), value)) return false;
    // The record is freed when the thread ends.
    if (value != nullptr) platform::armThreadExit();
    return true;
}

void warn(int32_t error) noexcept
{
    if (!logger::configuring())
        TOLLAN_LOG(ZOR_LOG_WARNING, kModule, "CdbSynchronizeInitialize", "Err = %d", static_cast<int>(error));
}

// Makes this module's record and publishes it in the mapping.
int32_t makeRecord(const MappingFunctions &functions, const char *mappingName) noexcept
{
    std::unique_ptr<platform::SharedMemory> made = functions.create(mappingName, sizeof(void *));
    if (made == nullptr) return kNoResources;
    platform::TlsIndex index = 0;
    if (!platform::tlsAlloc(&index)) return kNoResources;
    auto *connectionLock = new (std::nothrow) platform::RecursiveLock;
    auto *threadLock = new (std::nothrow) platform::RecursiveLock;
    auto *resourceLock = new (std::nothrow) platform::RecursiveLock;
    if (connectionLock == nullptr || threadLock == nullptr || resourceLock == nullptr) {
        delete connectionLock;
        delete threadLock;
        delete resourceLock;
        platform::tlsFree(index);
        return kNoResources;
    }
    std::memset(ownRecordStorage, 0, sizeof ownRecordStorage);
    auto *record = new (ownRecordStorage) RuntimeRecord{};
    ownControl = DebugControl{};
    ownControl.executionContext = -1;
    record->ownerInstance = services::lifecycle().moduleInstance;
    record->debugControl = &ownControl;
    record->threadEnvIndex = index;
    record->threads = &record->threadList;
    record->newThreadEnv = newThreadEnv;
    record->releaseThreadEnv = releaseThreadEnv;
    record->threadValue = threadValue;
    record->setThreadValue = setThreadValue;
    record->allocate = services::allocateBlock;
    record->free = services::freeBlock;
    record->registerAtExitCleanup = registerAtExitCleanup;
    record->unregisterAtExitCleanup = unregisterAtExitCleanup;
    record->spareThreadEnv = ownSpareThreadEnv();
    record->connectionLock = connectionLock;
    record->threadLock = threadLock;
    record->resources.lock = resourceLock;
    ownedIndex = index;
    indexOwned = true;
    RuntimeRecord *published = record;
    std::memcpy(made->data(), &published, sizeof published);
    mapping = made.release();
    owner = true;
    current.store(record, std::memory_order_release);
    registerCurrentThread(nullptr);
    return 0;
}

// Takes the record another module of the process made.
int32_t adoptRecord(std::unique_ptr<platform::SharedMemory> found) noexcept
{
    RuntimeRecord *record = nullptr;
    std::memcpy(&record, found->data(), sizeof record);
    if (record == nullptr) return kNoResources;
    // The record's code lives in the module that made it: that one must stay.
    if (record->ownerInstance != services::lifecycle().moduleInstance)
        keptOwnerModule =
            platform::loadModuleContaining(reinterpret_cast<const void *>(record->newThreadEnv));
    mapping = found.release();
    owner = false;
    current.store(record, std::memory_order_release);
    return 0;
}

}  // namespace

RuntimeRecord *runtimeRecord() noexcept
{
    return current.load(std::memory_order_acquire);
}

bool ownsRuntimeRecord() noexcept
{
    return owner;
}

int32_t CdbSynchronizeInitialize() noexcept
{
    if (runtimeRecord() != nullptr) return 0;
    const MappingFunctions &functions = mappingFunctions();
    char mutexName[96];
    char mappingName[96];
    name(mutexName, sizeof mutexName, kMutexBase);
    name(mappingName, sizeof mappingName, kMappingBase);

    std::unique_ptr<platform::NamedMutex> made = platform::NamedMutex::create(mutexName);
    if (made == nullptr || made->acquire(platform::kWaitForever) != platform::WaitResult::signalled) {
        warn(kNoMutex);
        return kNoMutex;
    }
    std::unique_ptr<platform::SharedMemory> existing = functions.open(mappingName, sizeof(void *));
    const int32_t result =
        existing != nullptr ? adoptRecord(std::move(existing)) : makeRecord(functions, mappingName);
    made->release();
    if (result != 0) {
        warn(result);
        return result;
    }
    mutex = made.release();
    return 0;
}

void closeThreadSynchronisation() noexcept
{
    RuntimeRecord *record = runtimeRecord();
    if (record == nullptr) return;
    if (mutex != nullptr) mutex->acquire(platform::kWaitForever);
    current.store(nullptr, std::memory_order_release);
    if (owner) {
        // Other modules find no record from here on.
        std::memset(mapping->data(), 0, sizeof(void *));
        for (ThreadRegistration *node = record->threadList; node != nullptr;) {
            ThreadRegistration *next = node->next;
            services::freeBlock(node);
            node = next;
        }
        record->threadList = nullptr;
        releaseResourceTable(*record);
        delete record->connectionLock;
        delete record->threadLock;
        owner = false;
    }
    delete mapping;
    mapping = nullptr;
    if (mutex != nullptr) mutex->release();
    delete mutex;
    mutex = nullptr;
    platform::unloadLibrary(keptOwnerModule);
    keptOwnerModule = nullptr;
}

void freeThreadEnvIndex() noexcept
{
    if (!indexOwned) return;
    platform::tlsFree(ownedIndex);
    indexOwned = false;
}

void registerCurrentThread(void *value) noexcept
{
    RuntimeRecord *record = runtimeRecord();
    if (record == nullptr) return;
    const uint32_t id = platform::currentThreadId();
    std::lock_guard hold(*record->threadLock);
    ThreadRegistration *empty = nullptr;
    for (ThreadRegistration *node = record->threadList; node != nullptr; node = node->next) {
        if (node->threadId == id) {
            if (node->value != nullptr && node->value != value) record->releaseThreadEnv(node->value);
            node->value = value;
            return;
        }
        if (node->value == nullptr && empty == nullptr) empty = node;
    }
    if (empty != nullptr) {
        *empty = ThreadRegistration{id, value, empty->next};
        return;
    }
    auto *node = static_cast<ThreadRegistration *>(record->allocate(sizeof(ThreadRegistration)));
    if (node == nullptr) return;
    *node = ThreadRegistration{id, value, nullptr};
    ThreadRegistration **link = &record->threadList;
    while (*link != nullptr) link = &(*link)->next;
    *link = node;
}

void unregisterCurrentThread() noexcept
{
    RuntimeRecord *record = runtimeRecord();
    if (record == nullptr) return;
    const uint32_t id = platform::currentThreadId();
    std::lock_guard hold(*record->threadLock);
    for (ThreadRegistration *node = record->threadList; node != nullptr; node = node->next)
        if (node->threadId == id) node->value = nullptr;
}

}  // namespace tollan::debugger
