// The thread-variable scheme. Each test works on a scheme of its own, since
// the running library's scheme holds the slots of the library's libraries.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include <tollan/engine.h>
#include <tollan/logger.h>

#include "services/thread_var_scheme.h"
#include "services/thread_vars.h"
#include "fixtures/log_capture.h"

namespace {

using tollan::services::ThreadVarScheme;
using tollan::testing::LogCapture;

std::string bogusAccessLine(const char *function)
{
    return std::string("ERROR|mgsource/thrdvar|") + function +
           "|Bogus thread local storage slot passed to GetZORThreadVar";
}

// Releases whatever a test left, so that no index leaks from one test to the next.
struct OwnScheme : ::testing::Test {
    ThreadVarScheme scheme;
    ~OwnScheme() override
    {
        while (scheme.indexAllocated() && scheme.users() != 0) scheme.uninitialize(1);
    }
};

TEST_F(OwnScheme, HandsOutSlotsInOrderAndKeepsValuesPerThread)
{
    int32_t first = 0;
    int32_t second = 0;
    ASSERT_EQ(scheme.initialize(&first), 1);
    ASSERT_EQ(scheme.initialize(&second), 1);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
    EXPECT_EQ(scheme.users(), 2);

    int here = 0;
    scheme.set(first, &here);
    EXPECT_EQ(scheme.get(first), &here);
    EXPECT_EQ(scheme.get(second), nullptr);

    void *seenElsewhere = &here;
    bool blockBefore = true;
    bool blockAfter = false;
    bool allCellsEmpty = true;
    std::thread other([&] {
        blockBefore = scheme.threadHasBlock();
        seenElsewhere = scheme.get(first);
        blockAfter = scheme.threadHasBlock();
        for (int32_t slot = 1; slot <= ThreadVarScheme::kCells; ++slot)
            allCellsEmpty = allCellsEmpty && scheme.get(slot) == nullptr;
        scheme.freeThreadBlock();
    });
    other.join();
    EXPECT_FALSE(blockBefore);
    EXPECT_EQ(seenElsewhere, nullptr);  // the first access on a new thread finds nothing ...
    EXPECT_TRUE(blockAfter);            // ... but leaves a block behind
    EXPECT_TRUE(allCellsEmpty);         // zero-filled
    EXPECT_EQ(scheme.get(first), &here);
}

TEST_F(OwnScheme, NothingIsStoredBeforeTheIndexExists)
{
    int value = 0;
    scheme.set(1, &value);
    EXPECT_EQ(scheme.get(1), nullptr);
    EXPECT_FALSE(scheme.threadHasBlock());
}

TEST_F(OwnScheme, TheNinthSlotIsHandedOutButEveryAccessWithItIsLoggedAsBogus)
{
    int32_t slot = 0;
    for (int i = 0; i < 9; ++i) ASSERT_EQ(scheme.initialize(&slot), 1);
    EXPECT_EQ(slot, 9);

    int value = 0;
    int eighth = 0;
    scheme.set(8, &eighth);
    LogCapture log(ZOR_LOG_ERROR);
    scheme.set(9, &value);
    EXPECT_EQ(scheme.get(9), nullptr);
    EXPECT_EQ(scheme.get(0), nullptr);
    EXPECT_EQ(scheme.get(8), &eighth);  // the stray store landed nowhere
    EXPECT_EQ(log.count(bogusAccessLine("SetZORThreadVarValue")), 1u);
    EXPECT_EQ(log.count(bogusAccessLine("GetZORThreadVarValue")), 2u);
}

TEST_F(OwnScheme, BogusOrTooManyReleasesAreLogged)
{
    int32_t slot = 0;
    ASSERT_EQ(scheme.initialize(&slot), 1);
    LogCapture log(ZOR_LOG_ERROR);
    scheme.uninitialize(0);
    scheme.uninitialize(9);
    EXPECT_EQ(log.count("Bogus thread local storage slot passed to UninitializeZORThreadVar"), 2u);
    EXPECT_EQ(scheme.users(), 1);
    EXPECT_TRUE(scheme.indexAllocated());

    // Releasing too often wraps the user count and keeps the scheme alive.
    scheme.uninitialize(slot);
    EXPECT_FALSE(scheme.indexAllocated());
    scheme.uninitialize(slot);
    EXPECT_EQ(
        log.count(
            "ERROR|mgsource/thrdvar|UninitializeZORThreadVar|UnitializeZORThreadVar called too many times"),
        1u);
    EXPECT_EQ(scheme.users(), 255);
}

TEST_F(OwnScheme, TheLastReleaseEndsTheSchemeAndNumberingStartsAgain)
{
    int32_t slots[3] = {};
    for (int32_t &slot : slots) ASSERT_EQ(scheme.initialize(&slot), 1);
    int value = 0;
    scheme.set(slots[2], &value);
    for (int32_t slot : slots) scheme.uninitialize(slot);
    EXPECT_FALSE(scheme.indexAllocated());
    EXPECT_FALSE(scheme.threadHasBlock());

    int32_t again = 0;
    ASSERT_EQ(scheme.initialize(&again), 1);
    EXPECT_EQ(again, 1);
    EXPECT_TRUE(scheme.indexAllocated());
    EXPECT_EQ(scheme.get(slots[2]), nullptr);  // a new index: the old value is gone
}

}  // namespace
