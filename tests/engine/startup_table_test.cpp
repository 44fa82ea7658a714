// The codes with which the start-up steps stop their stage, and where the
// steps that undo something do it. A real start-up cannot be made to fail at
// each step, so the rows are checked against the codes callers rely on:
// WInitApp's 91 and 2, WMain's -102 and -103.
#include <gtest/gtest.h>

#include <string>

#include "engine/startup_table.h"

namespace {

using namespace tollan::engine;

const StartupStep *row(const std::string &name)
{
    for (const StartupStep &step : startupSteps()) {
        if (step.name == name) return &step;
    }
    return nullptr;
}

TEST(StartupTable, EachStepStopsItsStageWithItsOwnCode)
{
    struct Case {
        const char *name;
        Stage stage;
        int32_t failureCode;  // 0: the step cannot stop the chain
    } cases[] = {
        {"SetUpMemory", Stage::initApp, 0},
        {"InitializeCodePage", Stage::initApp, 0},
        {"ZORDebugInitialize", Stage::initApp, 91},
        {"CdbInitialize", Stage::initApp, 91},
        {"InitAsyncAndMTProtection", Stage::initApp, 91},
        {"GetTimeOptions/GetDateOptions", Stage::initApp, 2},
        {"InitTimeLib", Stage::runtimeLibraries, -102},
        {"StdCLibInitOnce", Stage::runtimeLibraries, -103},
        {"InitExecutionThreadVars", Stage::runtimeLibraries, -103},
        {"FmtIOLibInitOnce", Stage::runtimeLibraries, -103},
        {"UtilityLibraryInitOnce", Stage::runtimeLibraries, -103},
    };
    for (const Case &c : cases) {
        const StartupStep *step = row(c.name);
        ASSERT_NE(step, nullptr) << c.name;
        EXPECT_EQ(step->stage, c.stage) << c.name;
        EXPECT_NE(step->initOnce, nullptr) << c.name;
        EXPECT_EQ(step->failureCode, c.failureCode) << c.name;
    }
}

TEST(StartupTable, ShutdownRecordsTheExitStatusFirstAndUndoesTheProtectionAfterItsUsers)
{
    const StartupStep *exitStatus = row("RecordExitStatus");
    ASSERT_NE(exitStatus, nullptr);
    EXPECT_EQ(exitStatus->cleanup.phase, CleanupPhase::libraries);
    for (const StartupStep &step : startupSteps()) {
        if (&step != exitStatus && step.cleanup.phase == CleanupPhase::libraries) {
            EXPECT_LT(exitStatus->cleanup.rank, step.cleanup.rank) << step.name;
        }
    }
    // The four locks of the async protection outlive every clean-up of WExitApp.
    const StartupStep *protection = row("InitAsyncAndMTProtection");
    ASSERT_NE(protection, nullptr);
    EXPECT_EQ(protection->cleanup.phase, CleanupPhase::protection);
    EXPECT_NE(protection->cleanup.run, nullptr);
}

}  // namespace
