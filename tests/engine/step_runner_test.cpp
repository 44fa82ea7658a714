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

StartupStep step(Stage stage, bool (*initOnce)() noexcept, const char *trace = nullptr,
                 int32_t failureCode = 0)
{
    return {.name = "step", .stage = stage, .initOnce = initOnce, .trace = trace, .failureCode = failureCode};
}

StartupStep cleansUp(Cleanup cleanup, ThreadCleanup threadCleanup = {})
{
    StartupStep result = step(Stage::initApp, succeeds<0>);
    result.cleanup = cleanup;
    result.threadCleanup = threadCleanup;
    return result;
}

struct StepRunner : ::testing::Test {
    StepRunner() { calls.clear(); }
};

TEST_F(StepRunner, AFailureWithACodeStopsTheStageAndOneWithoutDoesNot)
{
    const StartupStep steps[] = {
        step(Stage::initApp, succeeds<1>, "one returned"),
        step(Stage::runtimeLibraries, succeeds<9>),
        step(Stage::initApp, fails<2>, "two returned"),
        step(Stage::initApp, fails<3>, "three returned", 91),
        step(Stage::initApp, succeeds<4>, "four returned"),
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
    StartupStep steps[] = {step(Stage::processAttach, fails<1>), step(Stage::processAttach, succeeds<2>)};
    steps[0].onFailure = AttachFailure::closeAndRefuse;
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
        cleansUp({CleanupPhase::libraries, 30, cleanup<1>}, {20, cleanup<11>}),
        cleansUp({CleanupPhase::exitApp, 10, cleanup<2>}),
        cleansUp({CleanupPhase::libraries, 10, cleanup<3>}, {10, cleanup<13>}),
        cleansUp({CleanupPhase::libraries, 30, cleanup<4>}, {20, cleanup<14>}),
        step(Stage::initApp, succeeds<0>),
    };
    runCleanups(steps, CleanupPhase::libraries);
    EXPECT_EQ(calls, (std::vector<std::string>{"clean 3", "clean 1", "clean 4"}));

    calls.clear();
    runThreadCleanups(steps);
    EXPECT_EQ(calls, (std::vector<std::string>{"clean 13", "clean 11", "clean 14"}));
}

TEST_F(StepRunner, AfterCloseCleanUpsTraceAtDllMainLevel)
{
    const StartupStep steps[] = {cleansUp({CleanupPhase::afterClose, 0, cleanup<1>, "one cleaned"})};
    LogCapture log(ZOR_LOG_DLLMAIN, "[LEVEL]|[FUNC]|[MSG]");
    runCleanups(steps, CleanupPhase::afterClose);
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"DLLMAIN|DllMain|one cleaned"}));
}

}  // namespace
