// Reading and writing single items in place.
#include "logger/log.h"
#include "support/list_internal.h"

using namespace tollan::support::list;

void *LGetPtrToItem(ListType list, int32_t position) noexcept
{
    if (!checkSanity(list, "LGetPtrToItem")) return nullptr;
    ListBlock *block = blockOf(list);
    if (!checkNotEmpty(block, "LGetPtrToItem")) return nullptr;
    position = readPosition(block, position);
    if (!checkItemPosition(block, position, "LGetPtrToItem")) return nullptr;
    return slotAddress(block, position);
}

int32_t LGetItem(ListType list, void *buffer, int32_t position) noexcept
{
    if (!checkSanity(list, "LGetItem")) return failureStatus(list);
    ListBlock *block = blockOf(list);
    if (!checkNotEmpty(block, "LGetItem")) return kListErrArgument;
    position = readPosition(block, position);
    if (!checkItemPosition(block, position, "LGetItem")) return kListErrArgument;
    if (buffer == nullptr) {
        TOLLAN_LOG(ZOR_LOG_WARNING, kSource, "LGetItem", "Trying to get list item into NULL buffer.");
        return kListErrArgument;
    }
    std::memcpy(buffer, slotAddress(block, position), block->itemSize);
    return kListNoError;
}

// Unlike the other operations, kEndOfList is not a valid position here.
int32_t LReplaceItem(ListType list, const void *item, int32_t position) noexcept
{
    if (!checkSanity(list, "LReplaceItem")) return failureStatus(list);
    ListBlock *block = blockOf(list);
    if (block->numItems <= 0) {
        TOLLAN_LOG(ZOR_LOG_WARNING, kSource, "LReplaceItem", "Trying to remove item from empty list.");
        return kListErrArgument;
    }
    if (position == kFrontOfList) position = 1;
    if (position <= kEndOfList || position > block->numItems) {
        assertFailed("itemPosition > kEndOfList && itemPosition <= (*theList)->numItems", "LReplaceItem");
        return kListErrArgument;
    }
    if (item == nullptr) {
        assertFailed("item", "LReplaceItem");
        return kListErrArgument;
    }
    std::memmove(slotAddress(block, position), item, block->itemSize);
    return kListNoError;
}

void LSetNumItems(ListType list, int32_t numItems) noexcept
{
    if (checkSanity(list, "LSetNumItems")) blockOf(list)->numItems = numItems;
}

int32_t LUnlimitedGetItem(ListType list, void *buffer, int32_t position) noexcept
{
    const int32_t error = LUnlimitedExpandSpace(list, position);
    return error != kListNoError ? error : LGetItem(list, buffer, position);
}

int32_t LUnlimitedSetItem(ListType list, const void *item, int32_t position) noexcept
{
    const int32_t error = LUnlimitedExpandSpace(list, position);
    return error != kListNoError ? error : LReplaceItem(list, item, position);
}
