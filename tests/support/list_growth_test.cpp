// Growth by the allocation policy, exact growth, and failed resizes.
#include <gtest/gtest.h>

#include "list_fixtures.h"
#include "support/list_internal.h"

using listtest::ProbeAllocator;
namespace {

ListType listWithCapacity(uint32_t capacity)
{
    ListType list = LCreateWithOptions(sizeof(int32_t), 0, capacity, ProbeAllocator::reset());
    LSetNumItems(list, static_cast<int32_t>(capacity));
    return list;
}

uint32_t capacityAfterOneInsert(ListType list)
{
    EXPECT_EQ(listtest::insert(list, 1, kEndOfList), 0);
    return (*list)->capacity;
}

}  // namespace

TEST(ListGrowth, DefaultPolicyAddsTenPercentMoreThanTheCapacityPlusFour)
{
    ListType list = listWithCapacity(0);
    EXPECT_EQ((*list)->allocPolicy, 0x006E0004u);
    EXPECT_EQ(capacityAfterOneInsert(list), 4u);
    LDiscard(list);

    list = listWithCapacity(10);
    EXPECT_EQ(capacityAfterOneInsert(list), 25u);  // 110 % of 10 = 11, plus 4
    EXPECT_EQ(ProbeAllocator::setHSz, 1);
    EXPECT_EQ(LListMemSize(list), 25u * 4u + 40u);
    LDiscard(list);
}

TEST(ListGrowth, PolicyArithmeticIsSignedAndTruncates)
{
    ListType list = listWithCapacity(10);
    LSetMemoryAllocPolicy(list, 10, -55);  // -550 / 100 truncates to -5
    EXPECT_EQ(capacityAfterOneInsert(list), 15u);
    LDiscard(list);

    listtest::LogCapture log;
    list = listWithCapacity(10);
    LSetMemoryAllocPolicy(list, 0, 0);
    EXPECT_EQ(capacityAfterOneInsert(list), 11u);
    EXPECT_TRUE(log.contains("Assertion failed: Expected list to expand with more items."));
    LDiscard(list);
}

TEST(ListGrowth, HugeListsGrowByTheirPolicyUpToTheLargestCapacity)
{
    using tollan::support::list::kLargestCapacity;
    using tollan::support::list::policyGrowth;
    ListBlock block{};
    block.allocPolicy = 0x006E0004u;
    // 110 % of these no longer fits 32 bits.
    block.capacity = 20000000;
    EXPECT_EQ(policyGrowth(&block), 22000004);
    block.capacity = 1500000000;
    EXPECT_EQ(policyGrowth(&block), static_cast<int32_t>(kLargestCapacity - 1500000000));
    block.capacity = kLargestCapacity;
    EXPECT_EQ(policyGrowth(&block), 1);  // more than a list can hold: the resize refuses it
    block.allocPolicy = 0xFF9C0000u;     // -100 %
    block.capacity = 30000000;
    EXPECT_EQ(policyGrowth(&block), -30000000);
}

TEST(ListGrowth, ExactGrowthWhereTheCallerSaysHowMuch)
{
    ListType list = listWithCapacity(3);
    LSetNumItems(list, 1);
    EXPECT_EQ(LPreAllocateItems(list, 2), 0);
    EXPECT_EQ((*list)->capacity, 3u);
    EXPECT_EQ(LPreAllocateItems(list, 5), 0);
    EXPECT_EQ((*list)->capacity, 6u);

    EXPECT_EQ(LUnlimitedExpandSpace(list, 200), 0);  // more than the policy's 10
    EXPECT_EQ((*list)->capacity, 200u);
    EXPECT_EQ(LNumItems(list), 200);
    int32_t value = 42;
    EXPECT_EQ(LUnlimitedSetItem(list, &value, 300), 0);
    EXPECT_EQ((*list)->capacity, 200u + 220u + 4u);  // the policy's growth was larger
    value = 0;
    EXPECT_EQ(LUnlimitedGetItem(list, &value, 300), 0);
    EXPECT_EQ(value, 42);
    EXPECT_EQ(LNumItems(list), 300);
    LDiscard(list);
}

TEST(ListGrowth, FailedResizeLeavesTheListAsItWasAndIsLogged)
{
    listtest::LogCapture log;
    ListType list = listWithCapacity(2);
    ListType other = listtest::intList({5, 6, 7});
    ProbeAllocator::setHSzFails = true;
    EXPECT_EQ(listtest::insert(list, 3, kEndOfList), 2);
    EXPECT_EQ(LInsertInList(list, other, kEndOfList), 2);
    EXPECT_EQ(LAppend(list, other), nullptr);
    EXPECT_EQ(LCopy(list), nullptr);
    EXPECT_EQ(LUnlimitedExpandSpace(list, 9), 2);
    EXPECT_EQ((*list)->capacity, 2u);
    EXPECT_EQ(LNumItems(list), 2);
    EXPECT_EQ(ProbeAllocator::newHand, ProbeAllocator::disposeHand + 1);  // the failed copy was freed

    for (const char *line : {"WARNING|ExpandListSpace|list.c|MgErr = 2",
                             "WARNING|LInsertItem|list.c|Failed to expand list to 0 items.",
                             "WARNING|LInsertInList|list.c|Failed to expand list to 3 items.",
                             "WARNING|LAppend|list.c|Failed to set list handle size to 60 bytes.",
                             "WARNING|LCopy|list.c|Failed to set list handle size to 48 bytes."})
        EXPECT_TRUE(log.contains(line)) << line;

    const CollectionMemAllocFunctions *record = ProbeAllocator::reset();
    ProbeAllocator::newHandFails = true;
    EXPECT_EQ(LCreateWithOptions(4, 0, 0, record), nullptr);
    EXPECT_TRUE(log.contains("WARNING|LCreateWithOptions|list.c|Failed to allocate list handle."));
    EXPECT_EQ(LCreateWithOptions(4, 0, 0, nullptr), nullptr);
    EXPECT_TRUE(log.contains("Assertion failed: memFuncsPtr is a required parameter"));
    LDiscard(list);
    LDiscard(other);
}
