// Lists of pointers to blocks the list owns.
#include <cstring>

#include <gtest/gtest.h>

#include "list_fixtures.h"

using listtest::ProbeAllocator;

namespace {

size_t textSize(const void *block)
{
    return std::strlen(static_cast<const char *>(block)) + 1;
}

// A pointer list over the probe record holding copies of texts (null stays null).
ListType textList(std::initializer_list<const char *> texts)
{
    ListType list = LCreateWithOptions(sizeof(char *), 0, 0, ProbeAllocator::reset());
    for (const char *text : texts) {
        char *block = nullptr;
        if (text != nullptr) {
            block = static_cast<char *>((*list)->memFuncs->newPtr(textSize(text), (*list)->memFuncs));
            std::strcpy(block, text);
        }
        LInsertItem(list, &block, kEndOfList);
    }
    return list;
}

std::string textAt(ListType list, int32_t position)
{
    char *block = nullptr;
    LGetItem(list, &block, position);
    return block;
}

}  // namespace

TEST(ListPointers, CopyDuplicatesBlocksAndLeavesOutNulls)
{
    ListType list = textList({"one", nullptr, "three"});
    ListType copy = LCopyPtrList(list, textSize);
    ASSERT_NE(copy, nullptr);
    ASSERT_EQ(LNumItems(copy), 2);
    EXPECT_EQ(textAt(copy, 1), "one");
    EXPECT_EQ(textAt(copy, 2), "three");
    char *original = nullptr;
    char *duplicate = nullptr;
    LGetItem(list, &original, 1);
    LGetItem(copy, &duplicate, 1);
    EXPECT_NE(original, duplicate);

    LDiscardPtrList(copy);
    LDiscardPtrList(list);
    EXPECT_EQ(ProbeAllocator::liveBlocks(), 0);
    EXPECT_EQ(ProbeAllocator::newHand, ProbeAllocator::disposeHand);
}

TEST(ListPointers, FailedCopyFreesEverythingItMade)
{
    ListType list = textList({"a", "b", "c", "d"});
    const int blocksBefore = ProbeAllocator::liveBlocks();
    ProbeAllocator::newPtrsBeforeFailure = 2;  // the third duplicate fails
    EXPECT_EQ(LCopyPtrList(list, textSize), nullptr);
    EXPECT_EQ(ProbeAllocator::liveBlocks(), blocksBefore);
    EXPECT_EQ(ProbeAllocator::disposeHand + 1, ProbeAllocator::newHand);  // only the source is left

    ProbeAllocator::newPtrsBeforeFailure = -1;
    ProbeAllocator::setHSzFails = true;
    {
        listtest::LogCapture log;
        EXPECT_EQ(LCopyPtrList(list, textSize), nullptr);
        EXPECT_TRUE(log.contains("WARNING|LCopyPtrList|list.c|Failed to copy list."));
    }
    ProbeAllocator::setHSzFails = false;

    EXPECT_EQ(LRemoveItemsPtrList(list, 2, 2), 0);
    EXPECT_EQ(textAt(list, 2), "d");
    EXPECT_EQ(ProbeAllocator::liveBlocks(), blocksBefore - 2);
    LDiscardPtrList(list);
    EXPECT_EQ(ProbeAllocator::liveBlocks(), 0);
}
