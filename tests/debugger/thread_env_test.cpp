// Thread-state records: frames, positions and execution contexts as compiled
// debug code drives them.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include <tollan/debugger.h>
#include <tollan/logger.h>

#include "fixtures/log_capture.h"

namespace {

TEST(ThreadEnv, EachThreadHasItsOwnRecordAndResetClearsIt)
{
    ZORThreadEnv *mine = __DBG_GetCurrentThreadEnv();
    ASSERT_NE(mine, nullptr);
    EXPECT_EQ(__DBG_GetCurrentThreadEnv(), mine);
    EXPECT_EQ(__GetThreadEnvironmentForCurrentThread(), mine);
    ZORThreadEnv *theirs = nullptr;
    std::thread([&] { theirs = __DBG_GetCurrentThreadEnv(); }).join();
    EXPECT_NE(theirs, nullptr);
    EXPECT_NE(theirs, mine);

    uint32_t index = 12345;
    EXPECT_NE(__GetLocalThreadEnvSlot(&index), nullptr);
    EXPECT_NE(index, 12345u);

    mine->location.line = 7;
    mine->breakReason = 35;
    __DBG_ResetCurrentThreadEnv();
    EXPECT_EQ(mine->location.line, 0);
    EXPECT_EQ(mine->breakReason, 0);
    EXPECT_EQ(mine->trackResources, 1);
}

TEST(ThreadEnv, EnteringAndLeavingFunctionsKeepsTheCallersPosition)
{
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    __DBG_ResetCurrentThreadEnv();
    int32_t location[4] = {0, 0, 0, 0};
    ZORFunctionFrame outer{};
    ASSERT_EQ(__DBG_EnterFunctionInCurrentThreadEnv(record, &outer, "main.c"), 0);
    __DBG_SetCurrentThreadEnvPosition(record, location, 10, 4);
    record->location.functionWord = 99;

    ZORFunctionFrame inner{};
    ASSERT_EQ(__DBG_EnterFunctionInCurrentThreadEnv(record, &inner, "util.c"), 0);
    EXPECT_EQ(record->location.frame, &inner);
    EXPECT_EQ(inner.savedFrame, &outer);
    EXPECT_EQ(record->location.line, 0);
    EXPECT_EQ(record->location.functionWord, 0u);
    EXPECT_STREQ(record->location.fileName, "util.c");
    __DBG_SetCurrentThreadEnvLocation(record, location, "util.h", 3, 9);
    EXPECT_EQ(location[2], 3);
    EXPECT_EQ(location[3], 9);
    EXPECT_STREQ(record->location.fileName, "util.h");
    __DBG_SetCurrentThreadEnvFileName(record, "other.c");
    EXPECT_STREQ(record->location.fileName, "other.c");

    __DBG_LeaveFunctionInCurrentThreadEnv(record, &inner);
    EXPECT_EQ(record->location.frame, &outer);
    EXPECT_EQ(record->location.line, 10);
    EXPECT_EQ(record->location.column, 4);
    EXPECT_EQ(record->location.functionWord, 99u);
    EXPECT_STREQ(record->location.fileName, "main.c");
    __DBG_LeaveFunctionInCurrentThreadEnv(record, &outer);
    EXPECT_EQ(record->location.frame, nullptr);

    EXPECT_EQ(__DBG_EnterFunctionInCurrentThreadEnv(nullptr, &outer, "x.c"), -1);
    EXPECT_EQ(__DBG_EnterFunctionInCurrentThreadEnv(record, nullptr, "x.c"), -1);
}

TEST(ThreadEnv, ExecutionContextsKeepTheirOwnPositionAndCheckingEnvironment)
{
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    __DBG_ResetCurrentThreadEnv();
    __DBG_SetCurrentThreadEnvLocation(record, nullptr, "main.c", 20, 1);

    // A saved copy comes back over whatever happened meanwhile.
    void *saved = __DBG_SaveExecutionContext();
    ASSERT_NE(saved, nullptr);
    __DBG_SetCurrentThreadEnvPosition(record, nullptr, 99, 99);
    __DBG_RestoreExecutionContext(saved);
    EXPECT_EQ(record->location.line, 20);
    __DBG_RestoreExecutionContext(nullptr);

    const int32_t before = __SwitchExecutionContext(1);
    // Context 1 starts with its own (empty) position and keeps context 0's aside.
    EXPECT_EQ(record->location.line, 0);
    record->checkingEnvironment[0] = 0x5A;
    __DBG_SetCurrentThreadEnvLocation(record, nullptr, "callback.c", 5, 2);
    EXPECT_EQ(__SwitchExecutionContext(2), 1);
    EXPECT_EQ(__SwitchExecutionContext(1), 2);
    EXPECT_EQ(record->location.line, 5);
    EXPECT_STREQ(record->location.fileName, "callback.c");
    // Back to context 0: fresh checking environment, cleared position.
    EXPECT_EQ(__SwitchExecutionContext(0), 1);
    EXPECT_EQ(record->checkingEnvironment[0], 0);
    EXPECT_EQ(record->location.line, 0);
    EXPECT_EQ(__SwitchExecutionContext(1), 0);
    EXPECT_EQ(record->checkingEnvironment[0], 0x5A);

    // Indexes outside -1..3 change nothing.
    EXPECT_EQ(__SwitchExecutionContext(4), 1);
    EXPECT_EQ(__SwitchExecutionContext(-2), 1);
    EXPECT_EQ(__SwitchExecutionContext(before), 1);
}

// A real access fault, which the undefined-behaviour checker must let happen.
#if defined(__clang__) || defined(__GNUC__)
__attribute__((no_sanitize("undefined")))
#endif
void faulting(void *)
{
    volatile int *nowhere = nullptr;
    *nowhere = 1;
}

void harmless(void *argument)
{
    *static_cast<int *>(argument) = 7;
}

TEST(ThreadEnv, SafeCallsSurviveFaults)
{
    int value = 0;
    EXPECT_EQ(__DBG_SafeCall(harmless, &value), 0);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(__DBG_SafeCall(faulting, nullptr), -1);
    EXPECT_EQ(__DBG_SafeCall(nullptr, nullptr), -1);
    EXPECT_EQ(__DBG_SafeCall(harmless, &value), 0);  // and work again afterwards
}

}  // namespace
