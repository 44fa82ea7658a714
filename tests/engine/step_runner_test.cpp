// How the chain functions walk a table of steps: what stops a stage, which
// traces are written, and the order of clean-ups and per-thread clean-ups.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <tollan/logger.h>

#include "engine/step_runner.h"
#include "fixtures/log_capture.h"

namespace {

using namespace tollan::engine;
using tollan::testing::LogCapture;

std::vector<std::string> calls;

template <int N>
bool succeeds() noexcept
{
    calls.push_back("init " + std::to_string(N));
    return true;
}

template <int N>
bool fails() noexcept
{
    calls.push_back("fail " + std::to_string(N));
    return false;
}

template <int N>
void cleanup() noexcept
{
    calls.push_back("clean " + std::to_string(N));
}

constexpr TraceSite kSite{ZOR_LOG_TRACE, "test/steps", "Stage"};

struct StepRunner : ::testing::Test {
    StepRunner() { calls.clear(); }
};

TEST_F(StepRunner, AFailureWithACodeStopsTheStageAndOneWithoutDoesNot)
{
    const StartupStep steps[] = {
        {.name = "a", .stage = Stage::initApp, .initOnce = succeeds<1>, .trace = "one returned"},
        {.name = "b", .stage = Stage::runtimeLibraries, .initOnce = succeeds<9>},
        {.name = "c", .stage = Stage::initApp, .initOnce = fails<2>, .trace = "two returned"},
        {.name = "d",
         .stage = Stage::initApp,
         .initOnce = fails<3>,
         .trace = "three returned",
         .failureCode = 91},
        {.name = "e", .stage = Stage::initApp, .initOnce = succeeds<4>, .trace = "four returned"},
    };
    LogCapture log(ZOR_LOG_TRACE, "[FUNC]|[MSG]");
    const StartupStep *failed = runStage(steps, Stage::initApp, kSite);
    ASSERT_NE(failed, nullptr);
    EXPECT_EQ(failed->failureCode, 91);
    EXPECT_EQ(calls, (std::vector<std::string>{"init 1", "fail 2", "fail 3"}));
    // A tolerated failure still reports that its step returned; the stopping one does not.
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"Stage|one returned", "Stage|two returned"}));
}

TEST_F(StepRunner, EveryFailureStopsTheAttach)
{
    const StartupStep steps[] = {
        {.name = "a",
         .stage = Stage::processAttach,
         .initOnce = fails<1>,
         .onFailure = AttachFailure::closeAndRefuse},
        {.name = "b", .stage = Stage::processAttach, .initOnce = succeeds<2>},
    };
    const StartupStep *failed = runStage(steps, Stage::processAttach, kSite);
    ASSERT_NE(failed, nullptr);
    EXPECT_EQ(failed->onFailure, AttachFailure::closeAndRefuse);
    EXPECT_EQ(calls, (std::vector<std::string>{"fail 1"}));

    calls.clear();
    EXPECT_EQ(runStage(std::span(steps).subspan(1), Stage::processAttach, kSite), nullptr);
}

TEST_F(StepRunner, CleanUpsRunByPhaseAndRankNotByRowOrder)
{
    const StartupStep steps[] = {
        {.name = "a",
         .stage = Stage::initApp,
         .initOnce = succeeds<0>,
         .cleanup = {CleanupPhase::libraries, 30, cleanup<1>},
         .threadCleanup = {20, cleanup<11>}},
        {.name = "b",
         .stage = Stage::initApp,
         .initOnce = succeeds<0>,
         .cleanup = {CleanupPhase::exitApp, 10, cleanup<2>}},
        {.name = "c",
         .stage = Stage::initApp,
         .initOnce = succeeds<0>,
         .cleanup = {CleanupPhase::libraries, 10, cleanup<3>},
         .threadCleanup = {10, cleanup<13>}},
        {.name = "d",
         .stage = Stage::initApp,
         .initOnce = succeeds<0>,
         .cleanup = {CleanupPhase::libraries, 30, cleanup<4>},
         .threadCleanup = {20, cleanup<14>}},
        {.name = "e", .stage = Stage::initApp, .initOnce = succeeds<0>},
    };
    runCleanups(steps, CleanupPhase::libraries);
    EXPECT_EQ(calls, (std::vector<std::string>{"clean 3", "clean 1", "clean 4"}));

    calls.clear();
    runThreadCleanups(steps);
    EXPECT_EQ(calls, (std::vector<std::string>{"clean 13", "clean 11", "clean 14"}));
}

TEST_F(StepRunner, AfterCloseCleanUpsTraceAtDllMainLevel)
{
    const StartupStep steps[] = {
        {.name = "a",
         .stage = Stage::processAttach,
         .initOnce = succeeds<0>,
         .cleanup = {CleanupPhase::afterClose, 0, cleanup<1>, "one cleaned"}},
    };
    LogCapture log(ZOR_LOG_DLLMAIN, "[LEVEL]|[FUNC]|[MSG]");
    runCleanups(steps, CleanupPhase::afterClose);
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"DLLMAIN|DllMain|one cleaned"}));
}

}  // namespace
