// Keeping a list sorted while inserting.
#include "support/list_internal.h"

using namespace tollan::support::list;

int32_t LInsertItemInOrderEx(ListType list, const void *item, ListCompareFunction compare,
                             int32_t allowDuplicates, int32_t *found) noexcept
{
    if (found != nullptr) *found = 0;
    if (!checkSanity(list, "LInsertItemInOrderEx")) return failureStatus(list);
    if (item == nullptr || compare == nullptr) {
        assertFailed(item == nullptr ? "item" : "compareFunction", "LInsertItemInOrderEx");
        return kListErrArgument;
    }
    const ListBlock *block = blockOf(list);
    int32_t position = kFrontOfList;
    if (block->numItems > 0) {
        const int32_t index =
            binarySearch(itemsOf(blockOf(list)), block->numItems, block->itemSize, item, compare);
        if (index < 0) {
            position = -index;  // the 1-based insertion index
            if (position > block->numItems) position = kEndOfList;
        } else {
            if (found != nullptr) *found = 1;
            if (allowDuplicates == 0) return kListNoError;
            position = index + 1;
        }
    }
    const int32_t error = LInsertItem(list, item, position);
    if (error != kListNoError) logMgErr(error, "LInsertItemInOrderEx");
    return kListNoError;
}

int32_t LInsertListInOrder(ListType list, ListType other, ListCompareFunction compare) noexcept
{
    if (!checkSanity(list, "LInsertListInOrder")) return failureStatus(list);
    if (!checkSanity(other, "LInsertListInOrder", "CheckSanity(otherList)")) return failureStatus(other);
    if (blockOf(list)->itemSize != blockOf(other)->itemSize || list == other) {
        assertFailed("(*theList)->itemSize == (*otherList)->itemSize && theList != otherList",
                     "LInsertListInOrder");
        return kListErrArgument;
    }
    const int32_t count = blockOf(other)->numItems;
    for (int32_t position = 1; position <= count; ++position) {
        const int32_t error =
            LInsertItemInOrderEx(list, slotAddress(blockOf(other), position), compare, 1, nullptr);
        if (error != kListNoError) return error;
    }
    return kListNoError;
}
