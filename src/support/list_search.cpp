// Binary and linear search, the sorted check and traversal.
#include "support/list_internal.h"

namespace tollan::support::list {

int32_t binarySearch(const char *items, int32_t count, uint32_t itemSize, const void *key,
                     ListCompareFunction compare) noexcept
{
    int32_t low = 0;
    int32_t high = count - 1;
    int32_t middle = 0;
    int32_t order = 0;
    if (count <= 0) return -1;
    while (low <= high) {
        middle = static_cast<int32_t>((static_cast<uint32_t>(low) + static_cast<uint32_t>(high)) >> 1);
        order = compare(key, items + int64_t{middle} * itemSize);
        if (order == 0) return middle;
        if (order < 0)
            high = middle - 1;
        else
            low = middle + 1;
    }
    return ~(middle + (order >= 1 ? 1 : 0));
}

}  // namespace tollan::support::list

using namespace tollan::support::list;

namespace {

bool haveCompare(ListCompareFunction compare, const char *function, Where where = Where::current()) noexcept
{
    if (compare != nullptr) return true;
    assertFailed("compareFunction", function, where);
    return false;
}

// A 1-based range end: -1 is the first item, kEndOfList the last.
int32_t rangeEnd(int32_t position, int32_t count) noexcept
{
    if (position == kFrontOfList) return 1;
    return position == kEndOfList ? count : position;
}

}  // namespace

int32_t LBinSearch(ListType list, const void *item, ListCompareFunction compare) noexcept
{
    if (!checkSanity(list, "LBinSearch") || !haveCompare(compare, "LBinSearch")) return 0;
    Call_ListHLockFunc(list);
    const ListBlock *block = blockOf(list);
    const int32_t index =
        binarySearch(itemsOf(blockOf(list)), block->numItems, block->itemSize, item, compare);
    Call_ListHUnlockFunc(list);
    return index >= 0 ? index + 1 : 0;
}

int32_t LFindItemInRange(ListType list, const void *item, int32_t startPosition, int32_t endPosition,
                         ListCompareFunction compare) noexcept
{
    if (!checkSanity(list, "LFindItemInRange") || !haveCompare(compare, "LFindItemInRange")) return 0;
    ListBlock *block = blockOf(list);
    const int32_t count = block->numItems;
    if (count <= 0) return 0;
    const int32_t first = rangeEnd(startPosition, count);
    const int32_t last = rangeEnd(endPosition, count);
    if (first < 1 || first > count) {
        assertFailed("StartingPosition >=1 && StartingPosition <= (*theList)->numItems", "LFindItemInRange");
        return 0;
    }
    if (last < 1 || last > count) {
        assertFailed("EndingPosition >=1 && EndingPosition <= (*theList)->numItems", "LFindItemInRange");
        return 0;
    }
    const int32_t step = first <= last ? 1 : -1;
    for (int32_t position = first;; position += step) {
        if (compare(item, slotAddress(block, position)) == 0) return position;
        if (position == last) return 0;
    }
}

int32_t LIsSorted(ListType list, ListCompareFunction compare) noexcept
{
    if (!checkSanity(list, "LIsSorted") || !haveCompare(compare, "LIsSorted")) return 0;
    const ListBlock *block = blockOf(list);
    const char *item = itemsOf(blockOf(list));
    for (int32_t position = 1; position < block->numItems; ++position, item += block->itemSize) {
        if (compare(item, item + block->itemSize) > 0) return 0;
    }
    return 1;
}

void LTraverse(ListType list, ListTraverseFunction function, void *data) noexcept
{
    if (!checkSanity(list, "LTraverse")) return;
    if (function == nullptr) {
        assertFailed("traverseFunction", "LTraverse");
        return;
    }
    const int32_t count = blockOf(list)->numItems;
    // The block is looked up again for every item: the function may grow the list.
    for (int32_t position = 1; position <= count; ++position)
        function(slotAddress(blockOf(list), position), data);
}
