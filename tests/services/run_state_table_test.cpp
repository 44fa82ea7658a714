// The run-state table: its limits and the order of run-state events.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include <tollan/logger.h>

#include "fixtures/log_capture.h"
#include "services/run_state.h"
#include "services/run_state_table.h"

namespace {

using namespace tollan::services;
using tollan::testing::LogCapture;

// (callback number, event) in the order the callbacks heard them.
using Heard = std::vector<std::pair<int, int32_t>>;
Heard heard;

template <int N>
void callback(int32_t event)
{
    heard.emplace_back(N, event);
}

int moduleA;
int moduleB;

// The table that callbacks which register or start modules work on.
RunStateTable *tableInUse = nullptr;
int restarts = 0;

struct ModuleTable : ::testing::Test {
    RunStateTable table;
    ModuleTable()
    {
        heard.clear();
        tableInUse = &table;
        restarts = 0;
    }
};

TEST_F(ModuleTable, KeepsThirtyTwoCallbacksAndEachPairOnce)
{
    EXPECT_TRUE(table.add(callback<1>, &moduleA));
    EXPECT_TRUE(table.add(callback<1>, &moduleA));
    EXPECT_TRUE(table.add(callback<1>, &moduleB));
    EXPECT_EQ(table.count(), 2);

    static int modules[RunStateTable::kCapacity];
    for (int &module : modules) table.add(callback<2>, &module);
    EXPECT_EQ(table.count(), RunStateTable::kCapacity);
    EXPECT_FALSE(table.add(callback<3>, &moduleA));
    EXPECT_EQ(table.count(), RunStateTable::kCapacity);
    for (int32_t i = 0; i < table.count(); ++i) EXPECT_NE(table.entry(i).callback, callback<3>);
}

TEST_F(ModuleTable, StartsOneModuleOrEveryModuleInTableOrder)
{
    table.add(callback<1>, &moduleA);
    table.add(callback<2>, &moduleB);
    table.add(callback<3>, &moduleA);

    table.start(&moduleA);
    EXPECT_EQ(heard, (Heard{{1, 0}, {3, 0}, {1, 5}, {3, 5}}));
    EXPECT_EQ(table.entry(0).started, 1);
    EXPECT_EQ(table.entry(1).started, 0);

    heard.clear();
    table.start(nullptr);
    EXPECT_EQ(heard, (Heard{{1, 0}, {2, 0}, {3, 0}, {1, 5}, {2, 5}, {3, 5}}));
}

void registersAnother(int32_t event)
{
    heard.emplace_back(9, event);
    if (event == kRunStateStart) tableInUse->add(callback<4>, &moduleA);
}

TEST_F(ModuleTable, ACallbackRegisteredDuringStartIsStartedInTheSameWalk)
{
    table.add(registersAnother, &moduleA);
    table.start(&moduleA);
    EXPECT_EQ(heard, (Heard{{9, 0}, {4, 0}, {9, 5}, {4, 5}}));
}

TEST_F(ModuleTable, StopsLastFirstAndFillsHolesFromTheEnd)
{
    table.add(callback<1>, &moduleA);
    table.add(callback<2>, &moduleB);
    table.add(callback<3>, &moduleA);
    table.add(callback<4>, &moduleB);
    table.add(callback<5>, &moduleB);
    table.start(nullptr);
    heard.clear();

    table.stop(&moduleA);
    EXPECT_EQ(heard, (Heard{{3, 6}, {1, 6}, {3, 4}, {1, 4}}));
    ASSERT_EQ(table.count(), 3);
    // Entry 0's hole took the last entry (5); entry 2's the then last (4).
    EXPECT_EQ(table.entry(0).callback, callback<5>);
    EXPECT_EQ(table.entry(1).callback, callback<2>);
    EXPECT_EQ(table.entry(2).callback, callback<4>);
    for (int32_t i = 0; i < table.count(); ++i) EXPECT_EQ(table.entry(i).started, 1);
}

// Heard as N; at its start event it starts `module`, as a module that
// registers itself (or another) from its own callback does.
template <int N, int *module>
void starts(int32_t event)
{
    heard.emplace_back(N, event);
    if (event == kRunStateStart && ++restarts < 100) tableInUse->start(module);
}

TEST_F(ModuleTable, AModuleStartedAgainFromItsOwnCallbackIsStoppedWithAnAssertion)
{
    LogCapture log(ZOR_LOG_FATAL);
    table.add(starts<10, &moduleA>, &moduleA);
    EXPECT_TRUE(table.start(&moduleA));
    EXPECT_EQ(restarts, 1);
    EXPECT_EQ(heard, (Heard{{10, 0}, {10, 5}}));
    EXPECT_EQ(log.count("Assertion failed: a run-state callback does not start its own module again"), 1u);

    // The same through another module: A starts B, whose callback starts A.
    RunStateTable other;
    tableInUse = &other;
    restarts = 0;
    heard.clear();
    other.add(starts<11, &moduleB>, &moduleA);
    other.add(starts<12, &moduleA>, &moduleB);
    EXPECT_TRUE(other.start(&moduleA));
    EXPECT_EQ(restarts, 2);
    EXPECT_EQ(heard, (Heard{{11, 0}, {12, 0}, {12, 5}, {11, 5}}));
    EXPECT_EQ(log.count("Assertion failed:"), 2u);
}

TEST_F(ModuleTable, StartingAnotherModuleFromACallbackIsNoRecursion)
{
    LogCapture log(ZOR_LOG_FATAL);
    table.add(starts<11, &moduleB>, &moduleA);
    table.add(callback<1>, &moduleB);
    EXPECT_TRUE(table.start(nullptr));
    // B's callback is started by the nested walk and again by the outer one.
    EXPECT_EQ(heard, (Heard{{11, 0}, {1, 0}, {1, 5}, {1, 0}, {11, 5}, {1, 5}}));
    EXPECT_TRUE(log.lines().empty()) << log.text();
}

}  // namespace
