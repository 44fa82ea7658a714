// What the start-up chain leaves behind in a running program.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <thread>

#include <tollan/engine.h>
#include <tollan/logger.h>

#include "engine/detached_marker.h"
#include "engine/engine_state.h"
#include "services/lifecycle.h"
#include "engine/window_messages.h"
#include "fixtures/log_capture.h"
#include "platform/shared_memory.h"
#include "platform/thread.h"

namespace {

using namespace tollan::engine;
using namespace tollan::services;

TEST(Attach, TheChainRanToTheEnd)
{
    EXPECT_TRUE(lifecycle().initialised.load());
    EXPECT_FALSE(isClosed());
    EXPECT_FALSE(isDetaching());
    EXPECT_FALSE(lifecycle().startupFailure.load());
    EXPECT_TRUE(osVersionKnown());
    EXPECT_EQ(mainThreadId(), tollan::platform::currentThreadId());
    EXPECT_TRUE(state.asyncProtection);
    EXPECT_TRUE(state.runtimeLibrariesReady);
    EXPECT_TRUE(state.noPreviousInstance);
    EXPECT_EQ(std::strcmp(reinterpret_cast<const char *>(state.applicationName + 1), "zor"), 0);
    EXPECT_EQ(state.applicationName[0], 3);
}

TEST(Attach, OtherModulesCanFindTheDetachedMarker)
{
    char name[128];
    detachedMarkerName(name, sizeof name);
    EXPECT_EQ(std::strncmp(name, "Vantrel ZOR Shmen for ZORRTEHasBeenDetached for Tollan, ", 56), 0);
    auto marker = tollan::platform::SharedMemory::open(name, sizeof(uint32_t));
    ASSERT_NE(marker, nullptr);
    uint32_t word = 1;
    std::memcpy(&word, marker->data(), sizeof word);
    EXPECT_EQ(word, 0u);
}

TEST(Attach, RegistersFiveDistinctWindowMessages)
{
    std::set<uint32_t> ids;
    for (int i = 0; i < kWindowMessageCount; ++i) ids.insert(windowMessageId(static_cast<WindowMessage>(i)));
    EXPECT_EQ(ids.size(), 5u);
    EXPECT_EQ(ids.count(0), 0u);
}

TEST(ThreadDetach, RunsForAThreadThatUsedThreadVariables)
{
    tollan::testing::LogCapture log(ZOR_LOG_DLLMAIN, "[LEVEL]|[FUNC]|[MSG]");
    uint32_t id = 0;
    std::thread worker([&id] {
        id = tollan::platform::currentThreadId();
        SetZORThreadVarValue(1, nullptr);
    });
    worker.join();
    const std::string detach =
        "DLLMAIN|DllMain|DLL_THREAD_DETACH: thread " + std::to_string(static_cast<int>(id));
    EXPECT_EQ(log.count(detach), 1u) << log.text();
}

TEST(Queries, AnswerForAStandaloneProgramWithoutDebugger)
{
    EXPECT_EQ(__IsRTEStillLoaded(), 1);
    EXPECT_EQ(__SimulateRTShuttingDown(), 0);
    EXPECT_EQ(StartupLibraryInit(), 1);
    EXPECT_EQ(InStandaloneExecutable(), 1);
    EXPECT_EQ(UsingTollanDll(), 1);
    EXPECT_EQ(WhichRuntimeSupportDll(), 1);
    EXPECT_EQ(BeingDebuggedByZOR(), 0);
}

void cleanupNeverRun(intptr_t, intptr_t, intptr_t)
{
    ADD_FAILURE() << "an unregistered clean-up ran";
}

TEST(Queries, AtExitCleanUpsAreRegisteredWithTheDebugInterfaceAndCanBeTakenBack)
{
    const auto function = reinterpret_cast<intptr_t>(&cleanupNeverRun);
    EXPECT_EQ(__RegisterAtExitCleanup(0, 1, 2, 3), 0);
    EXPECT_EQ(__RegisterAtExitCleanup(function, 1, 2, 3), 1);
    EXPECT_EQ(__UnregisterAtExitCleanup(function, 1, 2, 4), 0);  // not the same arguments
    EXPECT_EQ(__UnregisterAtExitCleanup(function, 1, 2, 3), 1);
    EXPECT_EQ(__UnregisterAtExitCleanup(function, 1, 2, 3), 0);
}

}  // namespace
