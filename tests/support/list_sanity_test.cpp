// The sanity word that guards a list's block, and the callback record.
#include <cstring>

#include <gtest/gtest.h>

#include "list_fixtures.h"

using listtest::ProbeAllocator;

TEST(ListSanity, CallbackSlotsKeepTheirOrder)
{
    // The arguments come in an order of their own; the slots keep theirs.
    CollectionMemAllocFunctions record{};
    const CollectionMemAllocFunctions &d = *GetDefaultCollectionMemAllocFunctions();
    SetCollectionMemAllocFunctions(&record, d.newHand, d.newPtr, d.disposeHand, d.disposePtr, d.setHSz,
                                   d.hLock, d.hUnlock, d.hSize);
    const void *slots[8];
    std::memcpy(slots, &record, sizeof slots);
    EXPECT_EQ(slots[0], reinterpret_cast<const void *>(d.newHand));
    EXPECT_EQ(slots[1], reinterpret_cast<const void *>(d.disposeHand));
    EXPECT_EQ(slots[2], reinterpret_cast<const void *>(d.setHSz));
    EXPECT_EQ(slots[3], reinterpret_cast<const void *>(d.newPtr));
    EXPECT_EQ(slots[7], reinterpret_cast<const void *>(d.hSize));

    listtest::LogCapture log;
    SetCollectionMemAllocFunctions(nullptr, d.newHand, d.newPtr, d.disposeHand, d.disposePtr, d.setHSz,
                                   d.hLock, d.hUnlock, d.hSize);
    EXPECT_TRUE(
        log.contains("|SetCollectionMemAllocFunctions|list.c|Assertion failed: collectionMemAllocFunctions"));
}

TEST(ListSanity, OverwrittenFrontIsReportedAndNothingHappens)
{
    listtest::LogCapture log;
    ListType list = listtest::intList({1, 2, 3}, ProbeAllocator::reset());
    (*list)->sanity = 0x12345678;
    EXPECT_EQ(listtest::insert(list, 4, kEndOfList), 45);
    EXPECT_EQ(LRemoveItem(list, nullptr, 1), 45);
    EXPECT_EQ(LNumItems(list), 0);
    EXPECT_EQ(LCopy(list), nullptr);
    EXPECT_EQ((*list)->numItems, 3);
    EXPECT_TRUE(log.contains(
        "TEMP|LInsertItem|list.c|Error, front of list overwritten, expect 0xb00bdeed, but found 0x12345678"));
    EXPECT_TRUE(log.contains("FATAL|LInsertItem|list.c|Assertion failed: CheckSanity(theList)"));
    EXPECT_TRUE(log.contains("Assertion failed: CheckSanity(originalList)"));

    LDiscard(list);  // refused: the block is not freed
    EXPECT_EQ(ProbeAllocator::disposeHand, 0);
    EXPECT_TRUE(log.contains("Assertion failed: CheckEitherByteOrderSanity(theList)"));
    (*list)->sanity = LIST_SANITY_WORD;
    LDiscard(list);
    EXPECT_EQ(ProbeAllocator::disposeHand, 1);
}

TEST(ListSanity, OnlyDiscardAcceptsTheSwappedWord)
{
    listtest::LogCapture log;
    ListType list = listtest::intList({1}, ProbeAllocator::reset());
    (*list)->sanity = LIST_SANITY_WORD_SWAPPED;
    int32_t value = 0;
    EXPECT_EQ(LGetItem(list, &value, 1), 45);
    EXPECT_TRUE(log.contains("but found 0xedde0bb0"));
    LDiscard(list);
    EXPECT_EQ(ProbeAllocator::disposeHand, 1);

    ListType defaultList = listtest::intList({1});
    (*defaultList)->sanity = LIST_SANITY_WORD_SWAPPED;
    DLDiscard(defaultList);
    EXPECT_FALSE(log.contains("CheckEitherByteOrderSanity"));
}

TEST(ListSanity, MissingCallbacksAreReportedByTheirCaller)
{
    listtest::LogCapture log;
    CollectionMemAllocFunctions record = *ProbeAllocator::reset();
    record.setHSz = nullptr;
    record.hLock = nullptr;
    ListType list = LCreateWithOptions(4, 0, 0, &record);
    int32_t value = 1;
    EXPECT_NE(LInsertItem(list, &value, kEndOfList), 0);
    EXPECT_TRUE(log.contains("FATAL|Call_ListSetHSzFunc|list.c|Assertion failed: (*list)->memFuncs"));
    LBinSearch(list, &value, listtest::compareInts);
    EXPECT_TRUE(log.contains("FATAL|Call_ListHLockFunc|list.c|Assertion failed: (*list)->memFuncs"));
    LDiscard(list);
}
