// Module registration: the table's limits and the order of run-state events.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include <tollan/engine.h>

#include "engine/engine_state.h"
#include "engine/module_table.h"
#include "engine/run_state.h"

namespace {

using tollan::engine::RunStateTable;

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

struct ModuleTable : ::testing::Test {
    RunStateTable table;
    ModuleTable() { heard.clear(); }
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

RunStateTable *growing = nullptr;

void registersAnother(int32_t event)
{
    heard.emplace_back(9, event);
    if (event == kRunStateStart) growing->add(callback<4>, &moduleA);
}

TEST_F(ModuleTable, ACallbackRegisteredDuringStartIsStartedInTheSameWalk)
{
    growing = &table;
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

// Through the exported functions, on the running library's table.
TEST_F(ModuleTable, ExportedRegistrationStartsAndCloseAfterShutdownDoesNothing)
{
    static int module;
    const ZORRunStateCallback callbacks[] = {callback<7>, callback<8>, nullptr};
    ASSERT_EQ(InitZORRTDll(&module, callbacks), 1);
    EXPECT_EQ(heard, (Heard{{7, 0}, {8, 0}, {7, 5}, {8, 5}}));

    heard.clear();
    tollan::engine::state.closed.store(true);
    EXPECT_EQ(CloseZORRTDll(&module), 1);
    tollan::engine::state.closed.store(false);
    EXPECT_TRUE(heard.empty());

    EXPECT_EQ(CloseZORRTDll(&module), 1);
    EXPECT_EQ(heard, (Heard{{8, 6}, {7, 6}, {8, 4}, {7, 4}}));
}

#if defined(__x86_64__) || defined(__i386__)
uint16_t x87ControlWord()
{
    uint16_t word = 0;
    __asm__ __volatile__("fnstcw %0" : "=m"(word));
    return word;
}

TEST(ModuleRegistration, MasksEveryX87Exception)
{
    uint16_t unmasked = static_cast<uint16_t>(x87ControlWord() & ~0x3F);
    __asm__ __volatile__("fldcw %0" : : "m"(unmasked));
    ASSERT_EQ(x87ControlWord() & 0x3F, 0);
    ASSERT_EQ(InitZORRTDll(nullptr, nullptr), 1);
    EXPECT_EQ(x87ControlWord() & 0x3F, 0x3F);
}
#endif

}  // namespace
