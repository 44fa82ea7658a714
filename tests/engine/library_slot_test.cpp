// The library's own thread-variable slot and the exported functions that
// reach the library's scheme.
#include <gtest/gtest.h>

#include <tollan/engine.h>
#include <tollan/logger.h>

#include "engine/library_slot.h"
#include "fixtures/log_capture.h"
#include "services/thread_var_scheme.h"
#include "services/thread_vars.h"

namespace {

using tollan::testing::LogCapture;

TEST(LibraryThreadVars, TheLibraryHoldsTheFirstSlotAndItsFunctionsReachIt)
{
    EXPECT_EQ(tollan::engine::librarySlot(), 1);
    EXPECT_GE(tollan::services::threadVars().users(), 1);

    int32_t slot = 0;
    ASSERT_EQ(InitializeZORThreadVar(&slot), 1);
    EXPECT_GT(slot, tollan::engine::librarySlot());
    {
        LogCapture log(ZOR_LOG_FATAL);
        EXPECT_EQ(InitializeZORThreadVar(nullptr), 0);
        EXPECT_EQ(log.count("Assertion failed: slot != NULL"), 1u);
    }
    if (slot <= tollan::services::ThreadVarScheme::kCells) {
        void *record = tollan::services::allocThreadData(16);
        SetZORThreadVarValue(slot, record);
        EXPECT_EQ(GetZORThreadVarValue(slot), record);
        EXPECT_TRUE(tollan::services::threadHasBlock());
        SetZORThreadVarValue(slot, nullptr);
        tollan::services::freeThreadData(record);
    }
    UninitializeZORThreadVar(slot);
}

}  // namespace
