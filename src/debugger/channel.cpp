// The debug channel: choosing and keeping the transport, the shared
// information block of the debugger, the hooks, and the exported operations
// that dispatch to the transport in use.
#include "debugger/channel.h"

#include <atomic>
#include <cstring>
#include <mutex>

#include "debugger/at_exit.h"
#include "debugger/debug_control.h"
#include "debugger/events.h"
#include "debugger/resource_table.h"
#include "debugger/runtime_record.h"
#include "debugger/thread_env.h"
#include "platform/debugger.h"
#include "platform/dynamic_library.h"
#include "platform/standard_io_pipe.h"
#include "platform/thread.h"
#include "services/lifecycle.h"
#include "services/registry.h"
#include "services/text_format.h"

namespace tollan::debugger {
namespace {

constexpr const char *kSharedInfo = "Vantrel - ZOR DBG Shared Info";
constexpr const char *kDebugOutputPipe = "\\\\.\\pipe\\Vantrel - ZOR Pipe for Debugging Output";
constexpr uint32_t kSharedInfoSize = 364;
constexpr size_t kModuleFileNameLimit = 259;

// Fields of the shared information block the library writes or reads.
constexpr size_t kOpenerThreadId = 52;
constexpr size_t kSimulateShuttingDown = 56;  // written by the debugger
constexpr size_t kRefuseStartupLibrary = 60;  // written by the debugger
constexpr size_t kPublishedWords = 212;
constexpr size_t kProtocolLevel = 340;
constexpr size_t kVersion = 348;
constexpr uint16_t kVersionWords[] = {17, 0, 0, 295};
// The control block's word that the block publishes the address of.
constexpr size_t kPublishedControlOffset = 1752;

std::atomic<BackendTable *> current{nullptr};
std::atomic<uint32_t> connectingThread{0};
ZORSharedMemoryHandles sharedBlock{};
std::atomic<unsigned char *> sharedView{nullptr};

using Hook = void (*)() noexcept;
std::atomic<Hook> connectedHook{nullptr};
std::atomic<Hook> disconnectHook{nullptr};

// The library's own debug table: the entry points compiled code calls around
// every function, which a stepping debugger steps over.
const ZORDebugTableEntry kLibraryDebugTable[] = {
    {reinterpret_cast<const void *>(&__DBG_EnterFunctionInCurrentThreadEnv),
     reinterpret_cast<const void *>(&__DBG_LeaveFunctionInCurrentThreadEnv), "function frames"},
    {reinterpret_cast<const void *>(&__DBG_SaveExecutionContext),
     reinterpret_cast<const void *>(&__DBG_RestoreExecutionContext), "execution contexts"},
    {nullptr, nullptr, nullptr},
};

template <typename Value>
void writeField(unsigned char *block, size_t offset, Value value) noexcept
{
    std::memcpy(block + offset, &value, sizeof value);
}

template <typename Value>
Value readField(const unsigned char *block, size_t offset) noexcept
{
    Value value{};
    std::memcpy(&value, block + offset, sizeof value);
    return value;
}

void synchronize(size_t offset, uint32_t count) noexcept
{
    __ZOR_Debug_SynchronizeMemory(
        &sharedBlock,
        sharedBlock.view == nullptr ? nullptr : static_cast<unsigned char *>(sharedBlock.view) + offset,
        count);
}

// Writes the library's fields of a block just opened.
void publishInSharedBlock(unsigned char *block) noexcept
{
    writeField<uint32_t>(block, kOpenerThreadId, platform::currentThreadId());
    if (RuntimeRecord *runtime = runtimeRecord()) {
        const auto control = reinterpret_cast<uintptr_t>(runtime->debugControl);
        writeField<uint64_t>(block, kPublishedWords, reinterpret_cast<uintptr_t>(runtime->threads));
        writeField<uint64_t>(block, kPublishedWords + 8, control);
        writeField<uint64_t>(block, kPublishedWords + 16, control + kPublishedControlOffset);
        writeField<uint64_t>(block, kPublishedWords + 24, runtime->threadEnvIndex);
        synchronize(kPublishedWords, 32);
    }
    if (readField<uint16_t>(block, kVersion) == 0) {
        for (size_t i = 0; i < 4; ++i) writeField<uint16_t>(block, kVersion + 2 * i, kVersionWords[i]);
        synchronize(kVersion, 8);
    }
}

// The connected hook: a new connection announces the library.
void onConnected() noexcept
{
    __DBG_RegisterRTEWithDebugger(services::lifecycle().moduleInstance, kLibraryDebugTable);
}

// The disconnect hooks: the debugger has gone; texts stop.
void onLocalDisconnect() noexcept
{
    platform::closeDebugOutputPipe();
}

void onRemoteDisconnect() noexcept
{
    platform::closeDebugOutputPipe();
    remoteBackend().connectedWord = 0;
}

void installHooks() noexcept
{
    connectedHook.store(onConnected);
    disconnectHook.store(remoteSessionDown() ? onRemoteDisconnect : onLocalDisconnect);
}

// Adopts another module's transport, or tries each transport in turn.
// Returns the transport connected, or null. *madeHere: this call connected.
BackendTable *chooseTransport(RuntimeRecord *runtime, void *module, const char *fileName, intptr_t argument,
                              int32_t port, bool *madeHere) noexcept
{
    std::lock_guard hold(*runtime->connectionLock);
    *madeHere = false;
    if (runtime->backend != nullptr) {
        BackendTable *adopted = runtime->backend;
        if (adopted->connectedWord == 0) {
            if (adopted->connect(module, fileName, argument, port) != 0) return nullptr;
            *madeHere = true;
        }
        current.store(adopted);
        return adopted;
    }
    BackendTable *tried[] = {&localBackend(), &remoteBackend()};
    for (int mode = 1; mode <= 2; ++mode) {
        BackendTable *table = tried[mode - 1];
        if (table->connect(module, fileName, argument, port) == 0 && table->connectedWord != 0) {
            runtime->backend = table;
            runtime->connectionMode = mode;
            current.store(table);
            *madeHere = true;
            return table;
        }
    }
    return nullptr;
}

}  // namespace

void localObjectName(char *buffer, size_t size, const char *base) noexcept
{
    services::formatTextInto(buffer, size, "%s%x", base, platform::currentProcessId());
}

BackendTable &currentBackend() noexcept
{
    BackendTable *table = current.load();
    return table != nullptr ? *table : localBackend();
}

bool remoteSessionDown() noexcept
{
    char address[services::kRegStringBufferSize] = "";
    uint16_t port = 0;
    services::GetRemoteDebuggerLocation(address, &port);
    return address[0] != '\0' && remoteBackend().connectedWord == 0;
}

int32_t connectChannel(void *module, intptr_t argument, int32_t port) noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    if (runtime == nullptr || remoteSessionDown()) return ZOR_DEBUG_NOT_CONNECTED;
    char fileName[kModuleFileNameLimit + 1] = "";
    if (runtime->moduleFileName[0] != '\0')
        std::strcpy(fileName, runtime->moduleFileName);
    else
        platform::moduleFileName(module != nullptr ? module : services::lifecycle().moduleInstance, fileName,
                                 sizeof fileName);
    bool madeHere = false;
    BackendTable *table = chooseTransport(runtime, module, fileName, argument, port, &madeHere);
    if (table == nullptr) return ZOR_DEBUG_NOT_CONNECTED;
    if (Hook hook = connectedHook.load()) hook();
    if (madeHere) {
        connectingThread.store(platform::currentThreadId());
        if (table->connected != nullptr) table->connected(table);
    }
    return 0;
}

bool CdbInitialize() noexcept
{
    if (sharedView.load() != nullptr) return true;
    // Adopt what another module connected, or connect quietly.
    connectChannel(nullptr, 0, 0);
    uint32_t size = kSharedInfoSize;
    ZORSharedMemoryHandles handles{};
    if (localBackend().openSharedMemory(kSharedInfo, &size, &handles) == 0) {
        sharedBlock = handles;
        auto *view = static_cast<unsigned char *>(handles.view);
        publishInSharedBlock(view);
        sharedView.store(view);
        char pipeName[160];
        localObjectName(pipeName, sizeof pipeName, kDebugOutputPipe);
        platform::openDebugOutputPipe(pipeName);
        // The debugger that made the block reads the program's standard
        // output and error too; the pipe opens at the first write.
        platform::setStandardIoPipe(true);
    }
    installHooks();
    if (sharedView.load() != nullptr) onConnected();
    return true;
}

void disconnectChannel() noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    BackendTable *table = nullptr;
    if (runtime != nullptr) {
        std::lock_guard hold(*runtime->connectionLock);
        table = runtime->backend;
        runtime->backend = nullptr;
        runtime->connectionMode = 0;
    }
    current.store(&localBackend());
    if (table != nullptr && table->disconnect != nullptr) table->disconnect(1);
    if (Hook hook = disconnectHook.load()) hook();
}

void closeDebuggerSide() noexcept
{
    if (ownsRuntimeRecord()) runAtExitCleanups();
    if (sharedView.exchange(nullptr) != nullptr) {
        reportFinalTally();
        __DBG_UnregisterRTEWithDebugger(services::lifecycle().moduleInstance);
        localBackend().discardSharedMemory(&sharedBlock);
    }
    disconnectChannel();
    platform::closeDebugOutputPipe();
    // The libraries' own clean-ups ran before this step. What is written
    // from here on goes to its descriptor only: no write opens the pipe again.
    platform::setStandardIoPipe(false);
    platform::closeStandardIoPipe();
}

unsigned char *sharedInfoBlock() noexcept
{
    return sharedView.load();
}

uint32_t protocolLevel() noexcept
{
    const unsigned char *block = sharedView.load();
    return block != nullptr ? readField<uint16_t>(block, kProtocolLevel) : 0;
}

int32_t simulateShuttingDownRequested() noexcept
{
    const unsigned char *block = sharedView.load();
    return block != nullptr ? static_cast<int32_t>(readField<uint32_t>(block, kSimulateShuttingDown)) : 0;
}

bool startupLibraryRefused() noexcept
{
    const unsigned char *block = sharedView.load();
    return block != nullptr && readField<uint32_t>(block, kRefuseStartupLibrary) != 0;
}

void breakIntoDebugger() noexcept
{
    if (!platform::debuggerPresent()) return;
    const uint32_t lastError = platform::lastSystemError();
    ZORThreadEnv *record = existingThreadEnv();
    RuntimeRecord *runtime = runtimeRecord();
    auto *control = runtime != nullptr ? static_cast<DebugControl *>(runtime->debugControl) : nullptr;
    const uint32_t self = platform::currentThreadId();
    do {
        // Another thread is being stepped: this one waits its turn.
        while (control != nullptr) {
            const uint32_t stepping = std::atomic_ref<uint32_t>(control->steppingThreadId).load();
            if (stepping == 0 || stepping == self) break;
            platform::sleepMs(100);
        }
        if (control != nullptr && std::atomic_ref<uint32_t>(control->refreshWatchpoints).exchange(0) != 0)
            sendEventText("@{update_watchpoints:}@");
        if (control != nullptr && control->resetHook != nullptr) {
            sendEventText("@{call|reset:6}@");
            __DBG_SafeCall(control->resetHook, control->resetHookArgument);
        }
        platform::debugBreak(record);
    } while (record != nullptr && std::atomic_ref<int32_t>(record->stopPending).load() != 0);
    platform::setLastSystemError(lastError);
}

}  // namespace tollan::debugger

using namespace tollan::debugger;

namespace {

// The transport when it is connected; null otherwise.
BackendTable *connected() noexcept
{
    BackendTable &table = currentBackend();
    return table.connectedWord != 0 ? &table : nullptr;
}

}  // namespace

int32_t __ZOR_Debug_Connect(void *module, intptr_t argument, int32_t port) noexcept
{
    return connectChannel(module, argument, port);
}

int32_t __ZOR_Debug_Disconnect(void) noexcept
{
    return __ZOR_Debug_DisconnectEx(0);
}

int32_t __ZOR_Debug_DisconnectEx(int32_t flag) noexcept
{
    BackendTable *table = connected();
    if (table == nullptr || table->disconnect == nullptr) return ZOR_DEBUG_NOT_CONNECTED;
    const int32_t result = table->disconnect(flag);
    // A debugger that let go may come back: the hooks are put in place again.
    if (RuntimeRecord *runtime = runtimeRecord()) {
        std::lock_guard hold(*runtime->connectionLock);
        if (runtime->backend == table) {
            runtime->backend = nullptr;
            runtime->connectionMode = 0;
        }
    }
    return result;
}

int32_t __ZOR_Debug_IsConnected(void) noexcept
{
    return currentBackend().connectedWord != 0 ? 1 : 0;
}

int32_t __ZOR_Debug_Lock(void) noexcept
{
    BackendTable *table = connected();
    if (table == nullptr) return ZOR_DEBUG_NOT_CONNECTED;
    return table->lock != nullptr ? table->lock() : ZOR_DEBUG_NO_OPERATION;
}

int32_t __ZOR_Debug_Unlock(void) noexcept
{
    BackendTable *table = connected();
    if (table == nullptr) return ZOR_DEBUG_NOT_CONNECTED;
    return table->unlock != nullptr ? table->unlock() : ZOR_DEBUG_NO_OPERATION;
}

int32_t __ZOR_Debug_Break(void) noexcept
{
    BackendTable *table = connected();
    if (table == nullptr) return ZOR_DEBUG_NOT_CONNECTED;
    return table->breakThread != nullptr ? table->breakThread() : ZOR_DEBUG_NO_OPERATION;
}

int32_t __ZOR_Debug_BreakIsEnabled(int32_t kind) noexcept
{
    BackendTable *table = connected();
    return table != nullptr && table->breakIsEnabled != nullptr ? table->breakIsEnabled(kind) : 0;
}

int32_t __ZOR_Debug_OpenSharedMemory(const char *name, uint32_t *size,
                                     ZORSharedMemoryHandles *handles) noexcept
{
    BackendTable *table = connected();
    if (table == nullptr) return ZOR_DEBUG_NOT_CONNECTED;
    return table->openSharedMemory != nullptr ? table->openSharedMemory(name, size, handles)
                                              : ZOR_DEBUG_NO_OPERATION;
}

int32_t __ZOR_Debug_NewSharedMemory(const char *name, uint32_t size, ZORSharedMemoryHandles *handles) noexcept
{
    BackendTable &table = currentBackend();
    return table.newSharedMemory != nullptr ? table.newSharedMemory(name, size, handles)
                                            : ZOR_DEBUG_NO_OPERATION;
}

int32_t __ZOR_Debug_DiscardSharedMemory(ZORSharedMemoryHandles *handles) noexcept
{
    BackendTable &table = currentBackend();
    return table.discardSharedMemory != nullptr ? table.discardSharedMemory(handles) : ZOR_DEBUG_NO_OPERATION;
}

int32_t __ZOR_Debug_SynchronizeMemory(ZORSharedMemoryHandles *handles, void *address, uint32_t count) noexcept
{
    BackendTable *table = connected();
    if (table == nullptr) return ZOR_DEBUG_NOT_CONNECTED;
    return table->synchronizeMemory != nullptr ? table->synchronizeMemory(handles, address, count) : 0;
}

int32_t __ZOR_Debug_WaitForSignal(const char *name) noexcept
{
    BackendTable &table = currentBackend();
    return table.waitForSignal != nullptr ? table.waitForSignal(name) : ZOR_DEBUG_NO_OPERATION;
}

int32_t __ZOR_Debug_RegisterThread(void) noexcept
{
    if (remoteSessionDown()) return ZOR_DEBUG_NOT_CONNECTED;
    BackendTable *table = connected();
    if (table == nullptr) return ZOR_DEBUG_NOT_CONNECTED;
    return table->registerThread != nullptr ? table->registerThread() : ZOR_DEBUG_NO_OPERATION;
}

void __SetDebugModuleFileName(const char *fileName) noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    if (runtime == nullptr) return;
    std::lock_guard hold(*runtime->connectionLock);
    if (fileName == nullptr || std::strlen(fileName) > kModuleFileNameLimit)
        runtime->moduleFileName[0] = '\0';
    else
        std::strcpy(runtime->moduleFileName, fileName);
}

void __DBG_RegisterRTEWithDebugger(void *module, const ZORDebugTableEntry *table) noexcept
{
    sendModuleAttach(module, table);
}

void __DBG_UnregisterRTEWithDebugger(void *module) noexcept
{
    sendModuleDetach(module);
}

int32_t __DBG_SafeCall(void (*function)(void *argument), void *argument) noexcept
{
    return tollan::platform::callGuarded(function, argument) ? 0 : -1;
}
