// Growing a list's block: the allocation policy, ExpandListSpace and the
// operations that reserve or add slots.
#include <algorithm>
#include <cstdint>

#include "support/list_internal.h"

namespace tollan::support::list {

int32_t resizeBlock(ListType list, uint64_t slots) noexcept
{
    if (slots > kLargestCapacity) return kListErrMemoryFull;
    return Call_ListSetHSzFunc(list, blockBytes(blockOf(list)->itemSize, slots));
}

int32_t policyGrowth(const ListBlock *block) noexcept
{
    const int64_t percent = static_cast<int16_t>(block->allocPolicy >> 16);
    const int64_t minimum = block->allocPolicy & 0xFFFFu;
    // In 64 bits the product cannot wrap, however large the list; the
    // division truncates towards zero.
    const int64_t growth = percent * block->capacity / 100 + minimum;
    // Growth never takes the capacity past the largest one a list can have.
    // A list already that large asks for one more slot, which the resize
    // then refuses.
    const int64_t room = std::max<int64_t>(kLargestCapacity - int64_t{block->capacity}, 1);
    return static_cast<int32_t>(std::clamp<int64_t>(growth, INT32_MIN, room));
}

int32_t ExpandListSpace(ListType list, int32_t add) noexcept
{
    if (add == 0) {
        add = policyGrowth(blockOf(list));
        // A policy that asks for nothing (or for shrinking) still has to make room.
        if (add <= 0) {
            assertFailed("Expected list to expand with more items.", "ExpandListSpace");
            add = 1;
        }
    }
    const uint32_t capacity = blockOf(list)->capacity;
    const int32_t error = resizeBlock(list, uint64_t{capacity} + static_cast<uint32_t>(add));
    if (error != kListNoError) {
        logMgErr(error, "ExpandListSpace");
        return error;
    }
    if (!checkSanity(list, "ExpandListSpace", "CheckSanity(listHandle)")) return kListErrCorrupt;
    blockOf(list)->capacity = capacity + static_cast<uint32_t>(add);
    return kListNoError;
}

}  // namespace tollan::support::list

using namespace tollan::support::list;

int32_t LPreAllocateItems(ListType list, int32_t count) noexcept
{
    if (!checkSanity(list, "LPreAllocateItems", "CheckSanity(listHandle)")) return failureStatus(list);
    const ListBlock *block = blockOf(list);
    const int64_t freeSlots = int64_t{block->capacity} - block->numItems;
    if (freeSlots >= count) return kListNoError;
    return ExpandListSpace(list, static_cast<int32_t>(count - freeSlots));
}

void LSetMemoryAllocPolicy(ListType list, int32_t minimumItems, int32_t percent) noexcept
{
    if (!checkSanity(list, "LSetMemoryAllocPolicy")) return;
    blockOf(list)->allocPolicy =
        static_cast<uint32_t>(percent) * 65536u + static_cast<uint32_t>(minimumItems);
}

int32_t LUnlimitedExpandSpace(ListType list, int32_t count) noexcept
{
    if (!checkSanity(list, "LUnlimitedExpandSpace", "CheckSanity(listHandle)")) return failureStatus(list);
    const ListBlock *block = blockOf(list);
    if (block->numItems >= count) return kListNoError;
    const int64_t missing = count - int64_t{block->capacity};
    if (missing > 0) {
        const int32_t error =
            ExpandListSpace(list, static_cast<int32_t>(std::max<int64_t>(policyGrowth(block), missing)));
        if (error != kListNoError) return error;
    }
    blockOf(list)->numItems = count;
    return kListNoError;
}
