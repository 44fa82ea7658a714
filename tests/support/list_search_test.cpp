// Binary search, ordered insertion, ranged linear search and traversal.
#include <gtest/gtest.h>

#include "list_fixtures.h"

#include "support/list_internal.h"

using listtest::compareInts;
using listtest::intList;
using listtest::itemsOf;
using V = std::vector<int32_t>;

TEST(ListSearch, BinarySearchGivesTheInsertionPointAsOnesComplement)
{
    const int32_t items[] = {10, 20, 30, 40};
    auto search = [&](int32_t key, int32_t count = 4) {
        return tollan::support::list::binarySearch(reinterpret_cast<const char *>(items), count, 4, &key,
                                                   compareInts);
    };
    EXPECT_EQ(search(30), 2);
    EXPECT_EQ(search(5), ~0);
    EXPECT_EQ(search(25), ~2);
    EXPECT_EQ(search(45), ~4);
    EXPECT_EQ(search(10, 0), -1);

    // LBinSearch answers with 1-based positions, 0 for none, under a lock.
    ListType list = intList({10, 20, 30, 40}, listtest::ProbeAllocator::reset());
    int32_t key = 40;
    EXPECT_EQ(LBinSearch(list, &key, compareInts), 4);
    key = 41;
    EXPECT_EQ(LBinSearch(list, &key, compareInts), 0);
    EXPECT_EQ(listtest::ProbeAllocator::hLock, 2);
    EXPECT_EQ(listtest::ProbeAllocator::hUnlock, 2);
    LDiscard(list);
}

TEST(ListSearch, OrderedInsertionWithAndWithoutDuplicates)
{
    ListType list = intList({});
    int32_t found = -1;
    for (int32_t value : {30, 10, 50, 20, 40, 60, 0}) {
        EXPECT_EQ(LInsertItemInOrderEx(list, &value, compareInts, 0, &found), 0);
        EXPECT_EQ(found, 0);
    }
    EXPECT_EQ(itemsOf(list), (V{0, 10, 20, 30, 40, 50, 60}));
    int32_t value = 20;
    EXPECT_EQ(LInsertItemInOrderEx(list, &value, compareInts, 0, &found), 0);
    EXPECT_EQ(found, 1);
    EXPECT_EQ(LNumItems(list), 7);
    EXPECT_EQ(LInsertItemInOrderEx(list, &value, compareInts, 1, &found), 0);
    EXPECT_EQ(found, 1);
    EXPECT_EQ(itemsOf(list), (V{0, 10, 20, 20, 30, 40, 50, 60}));

    ListType more = intList({35, 5, 70});
    EXPECT_EQ(LInsertListInOrder(list, more, compareInts), 0);
    EXPECT_EQ(itemsOf(list), (V{0, 5, 10, 20, 20, 30, 35, 40, 50, 60, 70}));
    EXPECT_EQ(LIsSorted(list, compareInts), 1);
    EXPECT_EQ(LIsSorted(more, compareInts), 0);

    listtest::LogCapture log;
    EXPECT_EQ(LInsertItemInOrderEx(list, &value, nullptr, 1, &found), 1);
    EXPECT_TRUE(log.contains("Assertion failed: compareFunction"));
    LDiscard(list);
    LDiscard(more);
}

TEST(ListSearch, RangedSearchRunsEitherWay)
{
    ListType list = intList({7, 1, 7, 2, 7});
    int32_t key = 7;
    EXPECT_EQ(LFindItemInRange(list, &key, kFrontOfList, kEndOfList, compareInts), 1);
    EXPECT_EQ(LFindItemInRange(list, &key, kEndOfList, kFrontOfList, compareInts), 5);
    EXPECT_EQ(LFindItemInRange(list, &key, 4, 2, compareInts), 3);
    EXPECT_EQ(LFindItemInRange(list, &key, 2, 2, compareInts), 0);
    key = 1;
    EXPECT_EQ(LFindItemInRange(list, &key, kEndOfList, kFrontOfList, compareInts), 2);

    listtest::LogCapture log;
    EXPECT_EQ(LFindItemInRange(list, &key, 6, 1, compareInts), 0);
    EXPECT_TRUE(log.contains("StartingPosition >=1 && StartingPosition <= (*theList)->numItems"));
    EXPECT_EQ(LFindItemInRange(list, &key, 1, -3, compareInts), 0);
    EXPECT_TRUE(log.contains("EndingPosition >=1 && EndingPosition <= (*theList)->numItems"));
    LClear(list);
    const std::string before = log.text();
    EXPECT_EQ(LFindItemInRange(list, &key, 3, 9, compareInts), 0);
    EXPECT_EQ(log.text(), before);  // an empty list is no error
    LDiscard(list);
}

TEST(ListSearch, TraverseVisitsTheItemsPresentAtTheStart)
{
    ListType list = intList({1, 2, 3});
    // Each visit appends an item: the walk still stops after the first three.
    LTraverse(
        list,
        [](void *item, void *data) {
            int32_t doubled = *static_cast<int32_t *>(item) * 2;
            LInsertItem(static_cast<ListType>(data), &doubled, kEndOfList);
        },
        list);
    EXPECT_EQ(itemsOf(list), (V{1, 2, 3, 2, 4, 6}));
    LDiscard(list);
}
