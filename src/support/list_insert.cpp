// Inserting items and whole lists.
#include "logger/log.h"
#include "support/list_internal.h"

namespace tollan::support::list {
namespace {

// Maps an insertion position: numItems + 1 becomes kEndOfList. Reports and
// returns false for positions outside -1 .. numItems + 1.
bool insertPosition(const ListBlock *block, int32_t *position, const char *function,
                    Where where = Where::current()) noexcept
{
    if (int64_t{*position} == int64_t{block->numItems} + 1) *position = kEndOfList;
    if (*position >= kFrontOfList && *position <= block->numItems) return true;
    assertFailed("itemPosition >= -1 && itemPosition <= (*theList)->numItems", function, where);
    return false;
}

// The 1-based slot an insertion at a checked position writes to.
int32_t insertionSlot(const ListBlock *block, int32_t position) noexcept
{
    if (position == kFrontOfList) return block->numItems > 0 ? 1 : block->numItems + 1;
    return position == kEndOfList ? block->numItems + 1 : position;
}

// Moves items from `slot` on up by `count` slots to open a gap.
void openGap(ListBlock *block, int32_t slot, int32_t count) noexcept
{
    const size_t tail = size_t{block->itemSize} * static_cast<size_t>(block->numItems - slot + 1);
    std::memmove(slotAddress(block, slot + count), slotAddress(block, slot), tail);
}

}  // namespace
}  // namespace tollan::support::list

using namespace tollan::support::list;

int32_t LInsertItem(ListType list, const void *item, int32_t position) noexcept
{
    if (!checkSanity(list, "LInsertItem")) return failureStatus(list);
    if (item == nullptr) {
        assertFailed("item", "LInsertItem");
        return kListErrArgument;
    }
    if (!insertPosition(blockOf(list), &position, "LInsertItem")) return kListErrArgument;
    if (blockOf(list)->numItems >= static_cast<int64_t>(blockOf(list)->capacity)) {
        const int32_t error = ExpandListSpace(list, 0);
        if (error != kListNoError) {
            // The count is always 0 here: the text predates sized growth.
            TOLLAN_LOG(ZOR_LOG_WARNING, kSource, "LInsertItem", "Failed to expand list to %d items.", 0);
            return error;
        }
    }
    ListBlock *block = blockOf(list);
    const int32_t slot = insertionSlot(block, position);
    openGap(block, slot, 1);
    std::memcpy(slotAddress(block, slot), item, block->itemSize);
    ++block->numItems;
    return checkSanity(list, "LInsertItem") ? kListNoError : kListErrCorrupt;
}

int32_t LInsertInList(ListType list, ListType other, int32_t position) noexcept
{
    if (!checkSanity(list, "LInsertInList")) return failureStatus(list);
    if (!checkSanity(other, "LInsertInList", "CheckSanity(otherList)")) return failureStatus(other);
    if (blockOf(list)->itemSize != blockOf(other)->itemSize) {
        assertFailed("(*theList)->itemSize == (*otherList)->itemSize", "LInsertInList");
        return kListErrArgument;
    }
    if (!insertPosition(blockOf(list), &position, "LInsertInList")) return kListErrArgument;
    const int32_t added = blockOf(other)->numItems;
    if (added <= 0) return kListNoError;
    const int64_t missing = int64_t{blockOf(list)->numItems} + added - blockOf(list)->capacity;
    if (missing > 0) {
        const int32_t error = ExpandListSpace(list, static_cast<int32_t>(missing));
        if (error != kListNoError) {
            TOLLAN_LOG(ZOR_LOG_WARNING, kSource, "LInsertInList", "Failed to expand list to %d items.",
                       static_cast<int>(missing));
            return error;
        }
    }
    ListBlock *block = blockOf(list);
    const int32_t slot = insertionSlot(block, position);
    const int32_t count = block->numItems;
    const size_t itemSize = block->itemSize;
    openGap(block, slot, added);
    char *gap = slotAddress(block, slot);
    if (other == list) {
        // The source is the list as it was: the items before the gap and the
        // tail that now lies behind it.
        const size_t head = itemSize * static_cast<size_t>(slot - 1);
        std::memcpy(gap, itemsOf(block), head);
        std::memcpy(gap + head, slotAddress(block, slot + added),
                    itemSize * static_cast<size_t>(count - slot + 1));
    } else {
        std::memcpy(gap, itemsOf(blockOf(other)), itemSize * static_cast<size_t>(added));
    }
    block->numItems = count + added;
    return checkSanity(list, "LInsertInList") ? kListNoError : kListErrCorrupt;
}

ListType LAppend(ListType list1, ListType list2) noexcept
{
    if (!checkSanity(list1, "LAppend", "CheckSanity(L1)") ||
        !checkSanity(list2, "LAppend", "CheckSanity(L2)"))
        return nullptr;
    const uint32_t itemSize = blockOf(list1)->itemSize;
    if (itemSize != blockOf(list2)->itemSize) {
        assertFailed("(*L1)->itemSize == (*L2)->itemSize", "LAppend");
        return nullptr;
    }
    const int32_t count1 = blockOf(list1)->numItems;
    const int32_t count2 = blockOf(list2)->numItems;
    const auto total = static_cast<uint64_t>(int64_t{count1} + count2);
    if (resizeBlock(list1, total) != kListNoError) {
        TOLLAN_LOG(ZOR_LOG_WARNING, kSource, "LAppend", "Failed to set list handle size to %d bytes.",
                   static_cast<int>(blockBytes(itemSize, total)));
        return nullptr;
    }
    ListBlock *block = blockOf(list1);
    block->capacity = static_cast<uint32_t>(total);
    std::memcpy(slotAddress(block, count1 + 1), itemsOf(blockOf(list2)),
                size_t{itemSize} * static_cast<size_t>(count2));
    block->numItems = static_cast<int32_t>(total);
    if (!checkSanity(list1, "LAppend", "CheckSanity(L1)") ||
        !checkSanity(list2, "LAppend", "CheckSanity(L2)"))
        return nullptr;
    return list1;
}
