// The debug channel's exported operations without a debugger, and with a
// transport that lacks some operations.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

#include <tollan/debugger.h>
#include <tollan/engine.h>

#include "debugger/backend.h"
#include "debugger/library.h"
#include "debugger/runtime_record.h"
#include "platform/event.h"
#include "platform/thread.h"

namespace {

using namespace tollan::debugger;

TEST(DebugChannel, WithoutADebuggerNothingConnectsAndNothingIsSent)
{
    EXPECT_EQ(BeingDebuggedByZOR(), 0);
    EXPECT_EQ(__ZOR_Debug_Connect(nullptr, 0, 0), ZOR_DEBUG_NOT_CONNECTED);
    EXPECT_EQ(__ZOR_Debug_IsConnected(), 0);
    EXPECT_EQ(__ZOR_Debug_Disconnect(), ZOR_DEBUG_NOT_CONNECTED);
    EXPECT_EQ(__ZOR_Debug_Lock(), ZOR_DEBUG_NOT_CONNECTED);
    EXPECT_EQ(__ZOR_Debug_Unlock(), ZOR_DEBUG_NOT_CONNECTED);
    EXPECT_EQ(__ZOR_Debug_Break(), ZOR_DEBUG_NOT_CONNECTED);
    EXPECT_EQ(__ZOR_Debug_BreakIsEnabled(1), 0);
    EXPECT_EQ(__ZOR_Debug_RegisterThread(), ZOR_DEBUG_NOT_CONNECTED);
    uint32_t size = 364;
    ZORSharedMemoryHandles handles{};
    EXPECT_EQ(__ZOR_Debug_OpenSharedMemory("Vantrel - ZOR DBG Shared Info", &size, &handles),
              ZOR_DEBUG_NOT_CONNECTED);
    EXPECT_EQ(__ZOR_Debug_SynchronizeMemory(&handles, nullptr, 4), ZOR_DEBUG_NOT_CONNECTED);
    // Announcing a module says nothing to nobody, and returns at once.
    __DBG_RegisterRTEWithDebugger(nullptr, nullptr);
    __DBG_UnregisterRTEWithDebugger(nullptr);
}

TEST(DebugChannel, SharedBlocksAndSignalsWorkWithoutAConnection)
{
    ZORSharedMemoryHandles made{};
    ASSERT_EQ(__ZOR_Debug_NewSharedMemory("TollanTests block", 64, &made), 0);
    ASSERT_NE(made.view, nullptr);
    std::memcpy(made.view, "seen", 5);
    EXPECT_EQ(__ZOR_Debug_DiscardSharedMemory(&made), 0);
    EXPECT_EQ(made.view, nullptr);
    EXPECT_EQ(__ZOR_Debug_NewSharedMemory(nullptr, 64, &made), ZOR_DEBUG_OBJECT_FAILED);
    EXPECT_EQ(__ZOR_Debug_NewSharedMemory(std::string(300, 'n').c_str(), 64, &made), ZOR_DEBUG_OBJECT_FAILED);
    EXPECT_EQ(__ZOR_Debug_DiscardSharedMemory(nullptr), ZOR_DEBUG_OBJECT_FAILED);

    // A signal named after its base text and the process id, set by another thread.
    char name[96];
    std::snprintf(name, sizeof name, "TollanTests signal%x", tollan::platform::currentProcessId());
    std::thread signaller([&] {
        for (int tries = 0; tries < 500; ++tries) {
            if (auto event = tollan::platform::Event::open(name)) {
                event->set();
                return;
            }
            tollan::platform::sleepMs(2);
        }
    });
    EXPECT_EQ(__ZOR_Debug_WaitForSignal("TollanTests signal"), 0);
    signaller.join();
}

TEST(DebugChannel, AModuleFileNameOfTwoHundredAndSixtyCharactersIsNotStored)
{
    RuntimeRecord *record = runtimeRecord();
    ASSERT_NE(record, nullptr);
    __SetDebugModuleFileName(std::string(259, 'm').c_str());
    EXPECT_EQ(std::strlen(record->moduleFileName), 259u);
    __SetDebugModuleFileName(std::string(260, 'm').c_str());
    EXPECT_EQ(record->moduleFileName[0], '\0');
    __SetDebugModuleFileName(nullptr);
}

// A transport that is connected but has next to no operations.
int32_t connectNever(void *, const char *, intptr_t, int32_t) noexcept
{
    return ZOR_DEBUG_NOT_CONNECTED;
}

TEST(DebugChannel, AConnectionMadeByAnotherModuleIsAdoptedAndMissingOperationsAreReported)
{
    RuntimeRecord *record = runtimeRecord();
    ASSERT_NE(record, nullptr);
    static BackendTable sparse{};
    sparse.connect = connectNever;
    sparse.connectedWord = 1;
    record->backend = &sparse;  // as another module of the process would leave it
    record->connectionMode = 1;

    EXPECT_EQ(__ZOR_Debug_Connect(nullptr, 0, 0), 0);
    EXPECT_EQ(__ZOR_Debug_IsConnected(), 1);
    uint32_t size = 8;
    ZORSharedMemoryHandles handles{};
    EXPECT_EQ(__ZOR_Debug_OpenSharedMemory("x", &size, &handles), ZOR_DEBUG_NO_OPERATION);
    EXPECT_EQ(__ZOR_Debug_NewSharedMemory("x", 8, &handles), ZOR_DEBUG_NO_OPERATION);
    EXPECT_EQ(__ZOR_Debug_SynchronizeMemory(&handles, nullptr, 8), 0);
    EXPECT_EQ(__ZOR_Debug_Lock(), ZOR_DEBUG_NO_OPERATION);
    EXPECT_EQ(__ZOR_Debug_BreakIsEnabled(1), 0);
    EXPECT_EQ(__ZOR_Debug_RegisterThread(), ZOR_DEBUG_NO_OPERATION);

    // It has no disconnect either: only the library's own closing lets it go.
    EXPECT_EQ(__ZOR_Debug_Disconnect(), ZOR_DEBUG_NOT_CONNECTED);
    disconnectChannel();
    EXPECT_EQ(record->backend, nullptr);
    EXPECT_EQ(record->connectionMode, 0);
    EXPECT_EQ(__ZOR_Debug_IsConnected(), 0);
}

}  // namespace
