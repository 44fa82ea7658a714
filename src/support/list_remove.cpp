// Removing items. The capacity never shrinks.
#include "support/list_internal.h"

namespace tollan::support::list {
namespace {

// Removes `count` items from a read position on, copying the first into
// `buffer` when it is not null. With `disposeBlocks` the items are pointers
// whose blocks are freed first.
int32_t removeItems(ListType list, int32_t position, int32_t count, void *buffer, bool disposeBlocks,
                    const char *function) noexcept
{
    if (!checkSanity(list, function)) return failureStatus(list);
    ListBlock *block = blockOf(list);
    if (!checkNotEmpty(block, function)) return kListErrArgument;
    position = readPosition(block, position);
    if (!checkItemPosition(block, position, function)) return kListErrArgument;
    if (count < 0 || count > block->numItems - position + 1) {
        assertFailed("numToRemove <= (*theList)->numItems - itemPosition + 1", function);
        return kListErrArgument;
    }
    if (buffer != nullptr && count > 0) std::memcpy(buffer, slotAddress(block, position), block->itemSize);
    if (disposeBlocks) {
        disposeItemBlocks(list, position, count);
        block = blockOf(list);
    }
    const size_t tail = size_t{block->itemSize} * static_cast<size_t>(block->numItems - position - count + 1);
    std::memmove(slotAddress(block, position), slotAddress(block, position + count), tail);
    block->numItems -= count;
    return checkSanity(list, function) ? kListNoError : kListErrCorrupt;
}

}  // namespace
}  // namespace tollan::support::list

using namespace tollan::support::list;

int32_t LRemoveItem(ListType list, void *buffer, int32_t position) noexcept
{
    return removeItems(list, position, 1, buffer, false, "LRemoveItem");
}

int32_t LRemoveItems(ListType list, int32_t position, int32_t count) noexcept
{
    return removeItems(list, position, count, nullptr, false, "LRemoveItems");
}

int32_t LRemoveItemsPtrList(ListType list, int32_t position, int32_t count) noexcept
{
    return removeItems(list, position, count, nullptr, true, "LRemoveItemsPtrList");
}
