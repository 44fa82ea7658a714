// The local transport: the debugger on the same machine, reached through
// named shared memory, named events and the debug-output pipe, each named
// after its base text and the process id.
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "debugger/backend.h"
#include "debugger/channel.h"
#include "debugger/mappings.h"
#include "debugger/runtime_record.h"
#include "debugger/thread_env.h"
#include "logger/log.h"
#include "platform/debugger.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"
#include "services/text_format.h"

namespace tollan::debugger {
namespace {

constexpr const char *kModule = "debugger/zordebugwin32";
constexpr const char *kSharedInfo = "Vantrel - ZOR DBG Shared Info";
constexpr const char *kCleanupMutex = "Vantrel - ZOR DBG Shmem Cleanup Mutex";
constexpr size_t kSharedInfoSize = 364;
constexpr size_t kMaxName = 260;
constexpr uint32_t kSignalSliceMs = 1000;

// A block this process opened or made: a circular, doubly linked list with
// the most recent in front, searched by full name before the system is asked.
struct CachedBlock {
    char name[kMaxName + 1];
    platform::SharedMemory *mapping;
    uint32_t size;
    CachedBlock *previous;
    CachedBlock *next;
};

std::mutex cacheLock;
CachedBlock *cacheFront = nullptr;

void warnFailure(const char *function, int32_t code) noexcept
{
    if (!logger::configuring())
        TOLLAN_LOG(ZOR_LOG_WARNING, kModule, function, "Err = %d", static_cast<int>(code));
}

CachedBlock *findCached(const char *name) noexcept
{
    CachedBlock *block = cacheFront;
    if (block == nullptr) return nullptr;
    do {
        if (std::strcmp(block->name, name) == 0) return block;
        block = block->next;
    } while (block != cacheFront);
    return nullptr;
}

void linkInFront(CachedBlock *block) noexcept
{
    if (cacheFront == nullptr) {
        block->previous = block->next = block;
    } else {
        block->next = cacheFront;
        block->previous = cacheFront->previous;
        cacheFront->previous->next = block;
        cacheFront->previous = block;
    }
    cacheFront = block;
}

void unlink(CachedBlock *block) noexcept
{
    if (block->next == block) {
        cacheFront = nullptr;
        return;
    }
    block->previous->next = block->next;
    block->next->previous = block->previous;
    if (cacheFront == block) cacheFront = block->next;
}

void fill(ZORSharedMemoryHandles *handles, const CachedBlock &block) noexcept
{
    handles->view = block.mapping->data();
    handles->mapping = block.mapping;
    handles->size = block.size;
}

// Opens (create false) or makes a block and caches it. The caller holds cacheLock.
int32_t acquireBlock(const char *base, uint32_t size, bool create, ZORSharedMemoryHandles *handles) noexcept
{
    char name[kMaxName + 1];
    localObjectName(name, sizeof name, base);
    if (CachedBlock *cached = findCached(name)) {
        fill(handles, *cached);
        return 0;
    }
    const MappingFunctions &functions = mappingFunctions();
    std::unique_ptr<platform::SharedMemory> mapping =
        create ? functions.create(name, size) : functions.open(name, size);
    if (mapping == nullptr) return ZOR_DEBUG_OBJECT_FAILED;
    auto *block = new (std::nothrow) CachedBlock{};
    if (block == nullptr) return ZOR_DEBUG_NO_MEMORY;
    std::strcpy(block->name, name);
    block->mapping = mapping.release();
    block->size = size;
    linkInFront(block);
    fill(handles, *block);
    return 0;
}

int32_t openSharedMemory(const char *base, uint32_t *size, ZORSharedMemoryHandles *handles) noexcept
{
    if (base == nullptr || size == nullptr || handles == nullptr || std::strlen(base) >= kMaxName - 8)
        return ZOR_DEBUG_OBJECT_FAILED;
    std::lock_guard hold(cacheLock);
    const int32_t result = acquireBlock(base, *size, false, handles);
    if (result == 0) *size = handles->size;
    return result;
}

int32_t newSharedMemory(const char *base, uint32_t size, ZORSharedMemoryHandles *handles) noexcept
{
    if (base == nullptr || handles == nullptr || size == 0 || std::strlen(base) >= kMaxName - 8)
        return ZOR_DEBUG_OBJECT_FAILED;
    std::lock_guard hold(cacheLock);
    return acquireBlock(base, size, true, handles);
}

int32_t discardSharedMemory(ZORSharedMemoryHandles *handles) noexcept
{
    if (handles == nullptr || handles->mapping == nullptr) return ZOR_DEBUG_OBJECT_FAILED;
    // The debugger discards blocks too; the two take turns.
    char mutexName[kMaxName + 1];
    localObjectName(mutexName, sizeof mutexName, kCleanupMutex);
    std::unique_ptr<platform::NamedMutex> turn = platform::NamedMutex::create(mutexName);
    if (turn != nullptr) turn->acquire(platform::kWaitForever);
    {
        std::lock_guard hold(cacheLock);
        CachedBlock *block = cacheFront;
        CachedBlock *found = nullptr;
        if (block != nullptr) {
            do {
                if (block->mapping == handles->mapping) found = block;
                block = block->next;
            } while (found == nullptr && block != cacheFront);
        }
        if (found != nullptr) {
            unlink(found);
            delete found->mapping;
            delete found;
        }
    }
    if (turn != nullptr) turn->release();
    *handles = ZORSharedMemoryHandles{};
    return 0;
}

int32_t waitForSignal(const char *base) noexcept
{
    if (base == nullptr || std::strlen(base) >= kMaxName - 8) return ZOR_DEBUG_OBJECT_FAILED;
    char name[kMaxName + 1];
    localObjectName(name, sizeof name, base);
    std::unique_ptr<platform::Event> event = platform::Event::create(false, false, name);
    if (event == nullptr) {
        warnFailure("WaitSignal", ZOR_DEBUG_OBJECT_FAILED);
        return ZOR_DEBUG_OBJECT_FAILED;
    }
    for (;;) {
        switch (event->wait(kSignalSliceMs)) {
            case platform::WaitResult::signalled:
                return 0;
            case platform::WaitResult::timedOut:
                continue;
            case platform::WaitResult::failed:
                warnFailure("WaitSignal", ZOR_DEBUG_OBJECT_FAILED);
                return ZOR_DEBUG_OBJECT_FAILED;
        }
    }
}

int32_t connect(void *, const char *, intptr_t, int32_t) noexcept
{
    // The debugger is there when it has made this process's shared information block.
    uint32_t size = kSharedInfoSize;
    ZORSharedMemoryHandles handles{};
    if (openSharedMemory(kSharedInfo, &size, &handles) != 0) return ZOR_DEBUG_NOT_CONNECTED;
    localBackend().connectedWord = 1;
    return 0;
}

int32_t registerThread() noexcept
{
    if (localBackend().connectedWord == 0) return ZOR_DEBUG_NOT_CONNECTED;
    registerCurrentThread(__DBG_GetCurrentThreadEnv());
    return 0;
}

void connected(BackendTable *) noexcept
{
    registerThread();
}

void threadEnds() noexcept
{
    unregisterCurrentThread();
}

platform::RecursiveLock &channelLock() noexcept
{
    static platform::RecursiveLock *const lock = new (std::nothrow) platform::RecursiveLock;
    return *lock;
}

int32_t lock() noexcept
{
    channelLock().lock();
    return 0;
}

int32_t unlock() noexcept
{
    channelLock().unlock();
    return 0;
}

int32_t breakThread() noexcept
{
    breakIntoDebugger();
    return 0;
}

int32_t breakIsEnabled(int32_t) noexcept
{
    return localBackend().connectedWord != 0 && platform::debuggerPresent() ? 1 : 0;
}

int32_t disconnect(int32_t flag) noexcept;

constinit BackendTable local = {
    .connect = connect,
    .connected = connected,
    .disconnect = disconnect,
    .lock = lock,
    .unlock = unlock,
    .breakThread = breakThread,
    .openSharedMemory = openSharedMemory,
    .newSharedMemory = newSharedMemory,
    .discardSharedMemory = discardSharedMemory,
    .waitForSignal = waitForSignal,
    .registerThread = registerThread,
    .threadEnds = threadEnds,
    .breakIsEnabled = breakIsEnabled,
};

// Flag 0: a disconnect the program asks for while the debugger watches: with
// a debugger of protocol level 10 or more the thread stops (break reason 35)
// so that the debugger sees it go, and waits until the debugger lets go.
// Any other flag: the library closes; no handshake.
int32_t disconnect(int32_t flag) noexcept
{
    if (local.connectedWord == 0) return ZOR_DEBUG_NOT_CONNECTED;
    if (flag == 0 && protocolLevel() >= 10) {
        char name[96];
        services::formatTextInto(name, sizeof name, "Vantrel - ZOR DBG Debugger Disconnected %d",
                                 static_cast<int>(platform::currentProcessId()));
        std::unique_ptr<platform::Event> letGo = platform::Event::create(false, false, name);
        ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
        if (record != nullptr) {
            record->breakReason = ZOR_BREAK_REASON_DISCONNECTED;
            record->breakDetail = nullptr;
        }
        breakIntoDebugger();
        if (letGo != nullptr) letGo->wait(platform::kWaitForever);
        // The reason was this stop's alone: a later break of the thread (after
        // a new connection) must not look like another disconnect.
        if (record != nullptr) record->breakReason = 0;
    }
    local.connectedWord = 0;
    char name[96];
    services::formatTextInto(name, sizeof name, "Vantrel - ZOR DBG RTE Disconnected %d",
                             static_cast<int>(platform::currentProcessId()));
    if (std::unique_ptr<platform::Event> gone = platform::Event::create(true, false, name)) gone->set();
    return 0;
}

}  // namespace

BackendTable &localBackend() noexcept
{
    return local;
}

}  // namespace tollan::debugger
