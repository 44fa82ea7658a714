// Positions: 1-based items, kEndOfList and -1, and the one operation that
// refuses kEndOfList.
#include <gtest/gtest.h>

#include "list_fixtures.h"

using listtest::insert;
using listtest::intList;
using listtest::itemsOf;
using V = std::vector<int32_t>;

TEST(ListPositions, InsertAtEveryKindOfPosition)
{
    ListType list = intList({});
    EXPECT_EQ(insert(list, 7, 1), 0);  // numItems + 1 appends
    EXPECT_EQ(insert(list, 8, kFrontOfList), 0);
    EXPECT_EQ(insert(list, 9, kEndOfList), 0);
    EXPECT_EQ(insert(list, 10, 2), 0);
    EXPECT_EQ(itemsOf(list), (V{8, 10, 7, 9}));
    LDiscard(list);

    list = intList({});
    EXPECT_EQ(insert(list, 5, kFrontOfList), 0);  // front of an empty list appends
    EXPECT_EQ(itemsOf(list), (V{5}));

    listtest::LogCapture log;  // beyond the end is refused
    EXPECT_EQ(insert(list, 3, 3), 1);
    EXPECT_EQ(insert(list, 3, -2), 1);
    EXPECT_EQ(insert(nullptr, 3, 0), 1);
    EXPECT_EQ(itemsOf(list), (V{5}));
    EXPECT_TRUE(log.contains("FATAL|LInsertItem|list.c|Assertion failed: itemPosition >= -1"));
    LDiscard(list);
}

TEST(ListPositions, GetAndRemoveTakeEndOfListAsTheLastItem)
{
    ListType list = intList({1, 2, 3, 4});
    int32_t value = 0;
    EXPECT_EQ(LGetItem(list, &value, kEndOfList), 0);
    EXPECT_EQ(value, 4);
    EXPECT_EQ(LGetItem(list, &value, kFrontOfList), 0);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(LRemoveItem(list, &value, kEndOfList), 0);
    EXPECT_EQ(value, 4);
    EXPECT_EQ(LRemoveItem(list, nullptr, kFrontOfList), 0);
    EXPECT_EQ(itemsOf(list), (V{2, 3}));
    EXPECT_EQ(*static_cast<int32_t *>(LGetPtrToItem(list, kEndOfList)), 3);
    LDiscard(list);
}

TEST(ListPositions, ReplaceRefusesEndOfList)
{
    listtest::LogCapture log;
    ListType list = intList({1, 2, 3});
    int32_t value = 9;
    EXPECT_EQ(LReplaceItem(list, &value, kEndOfList), 1);
    EXPECT_EQ(itemsOf(list), (V{1, 2, 3}));
    EXPECT_TRUE(log.contains("Assertion failed: itemPosition > kEndOfList"));
    EXPECT_EQ(LReplaceItem(list, &value, kFrontOfList), 0);
    EXPECT_EQ(LReplaceItem(list, &value, 3), 0);
    EXPECT_EQ(itemsOf(list), (V{9, 2, 9}));

    LClear(list);
    EXPECT_EQ(LReplaceItem(list, &value, 1), 1);
    EXPECT_TRUE(log.contains("WARNING|LReplaceItem|list.c|Trying to remove item from empty list."));
    LDiscard(list);
}

TEST(ListPositions, BadReadsCopyNothingAndSayWhy)
{
    listtest::LogCapture log;
    ListType list = intList({});
    int32_t value = -1;
    EXPECT_EQ(LGetItem(list, &value, kEndOfList), 1);
    EXPECT_EQ(LRemoveItem(list, &value, 1), 1);
    EXPECT_TRUE(log.contains("Assertion failed: (*theList)->numItems > 0"));
    LDiscard(list);

    list = intList({1, 2});
    EXPECT_EQ(LGetItem(list, &value, 3), 1);
    EXPECT_EQ(value, -1);
    EXPECT_TRUE(
        log.contains("Assertion failed: itemPosition >= kEndOfList && itemPosition <= (*theList)->numItems"));
    EXPECT_EQ(LGetItem(list, nullptr, 1), 1);
    EXPECT_TRUE(log.contains("WARNING|LGetItem|list.c|Trying to get list item into NULL buffer."));
    EXPECT_EQ(LRemoveItems(list, 2, 2), 1);
    EXPECT_TRUE(log.contains("Assertion failed: numToRemove <= (*theList)->numItems - itemPosition + 1"));
    EXPECT_EQ(LNumItems(nullptr), 0);
    EXPECT_EQ(LNumItemsSafe(nullptr), 0);
    LDiscard(list);
}

TEST(ListPositions, WholeListsInsertAppendAndCopy)
{
    ListType list = intList({1, 2, 3});
    ListType other = intList({8, 9});
    EXPECT_EQ(LInsertInList(list, other, 2), 0);
    EXPECT_EQ(itemsOf(list), (V{1, 8, 9, 2, 3}));
    EXPECT_EQ(LInsertInList(list, list, 2), 0);  // a list into itself, as it was
    EXPECT_EQ(itemsOf(list), (V{1, 1, 8, 9, 2, 3, 8, 9, 2, 3}));
    EXPECT_EQ(LRemoveItems(list, 2, 8), 0);
    EXPECT_EQ(itemsOf(list), (V{1, 3}));

    EXPECT_EQ(LAppend(list, other), list);
    EXPECT_EQ(itemsOf(list), (V{1, 3, 8, 9}));
    EXPECT_EQ((*list)->capacity, 4u);

    LSetMemoryAllocPolicy(list, 7, 50);
    (*list)->options = 0x1234;
    ListType copy = LCopy(list);
    EXPECT_EQ(itemsOf(copy), itemsOf(list));
    EXPECT_EQ((*copy)->capacity, 4u);
    EXPECT_EQ((*copy)->options, 0x1234u);
    EXPECT_EQ((*copy)->allocPolicy, 50u * 65536u + 7u);

    ListType shorts = LCreateWithOptions(2, 0, 0, GetDefaultCollectionMemAllocFunctions());
    {
        listtest::LogCapture log;
        EXPECT_EQ(LInsertInList(list, shorts, 0), 1);
        EXPECT_EQ(LAppend(list, shorts), nullptr);
    }
    for (ListType each : {list, other, copy, shorts}) LDiscard(each);
}

TEST(ListPositions, StackPushesAndPopsAtTheEnd)
{
    EXPECT_TRUE(listtest::defaultRecordInstalledAtStartup);
    StackType stack = nullptr;
    EXPECT_EQ(SNew(nullptr, 4), 2);
    ASSERT_EQ(SNew(&stack, sizeof(int32_t)), 0);
    EXPECT_EQ((*stack)->capacity, 0u);
    EXPECT_EQ((*stack)->memFuncs, GetDefaultCollectionMemAllocFunctions());
    for (int32_t value = 1; value <= 5; ++value) EXPECT_EQ(SPush(stack, &value), 0);
    int32_t top = 0;
    EXPECT_EQ(STop(stack, &top), 0);
    EXPECT_EQ(top, 5);
    EXPECT_EQ(SPop(stack, &top), 0);
    EXPECT_EQ(SPop(stack, &top), 0);
    EXPECT_EQ(top, 4);
    EXPECT_EQ(LNumItems(stack), 3);
    SClear(stack);
    SClear(nullptr);
    EXPECT_EQ(LNumItems(stack), 0);
    SDispose(&stack);
    EXPECT_EQ(stack, nullptr);
    SDispose(&stack);
    SDispose(nullptr);
}
