// Creating, copying, clearing and discarding lists, and the plain queries.
#include <algorithm>

#include "logger/log.h"
#include "services/resource_failure.h"
#include "support/list_allocator.h"
#include "support/list_internal.h"

namespace tollan::support::list {

// The block layout is shared with every program that reads a list directly.
static_assert(offsetof(ListBlock, options) == 0);
static_assert(offsetof(ListBlock, sanity) == 4);
static_assert(offsetof(ListBlock, allocPolicy) == 8);
static_assert(offsetof(ListBlock, capacity) == 12);
static_assert(offsetof(ListBlock, itemSize) == 16);
static_assert(offsetof(ListBlock, numItems) == 20);
static_assert(offsetof(ListBlock, memFuncs) == 24);
static_assert(sizeof(ListBlock) == 32, "items start at offset 32");
static_assert(LIST_BLOCK_OVERHEAD == sizeof(ListBlock) + 8, "8 bytes of slack follow the items");

}  // namespace tollan::support::list

using namespace tollan::support::list;

ListType LCreateWithOptions(uint32_t itemSize, uint32_t options, uint32_t initialCapacity,
                            const CollectionMemAllocFunctions *memFuncs) noexcept
{
    if (memFuncs == nullptr || memFuncs->newHand == nullptr) {
        assertFailed("memFuncsPtr is a required parameter", "LCreateWithOptions");
        return nullptr;
    }
    void **handle =
        memFuncs->newHand(blockBytes(itemSize, initialCapacity), options, initialCapacity, memFuncs);
    if (handle == nullptr) {
        TOLLAN_RESOURCE_FAILURE(kSource, "LCreateWithOptions", "Failed to allocate list handle.");
        return nullptr;
    }
    auto list = reinterpret_cast<ListType>(handle);
    *blockOf(list) = ListBlock{
        options, LIST_SANITY_WORD, LIST_DEFAULT_ALLOC_POLICY, initialCapacity, itemSize, 0, memFuncs};
    return list;
}

void LDiscard(ListType list) noexcept
{
    if (list == nullptr) return;
    if (!checkEitherByteOrderSanity(list, "LDiscard", "CheckEitherByteOrderSanity(theList)")) return;
    Call_ListDisposeHandFunc(list, blockOf(list)->memFuncs);
}

void DLDiscard(void *list) noexcept
{
    if (list == nullptr) return;
    auto theList = static_cast<ListType>(list);
    if (!checkEitherByteOrderSanity(theList, "DLDiscard", "CheckEitherByteOrderSanity((ListType)theList)"))
        return;
    Call_ListDisposeHandFunc(theList, tollan::support::defaultListAllocator());
}

void LClear(ListType list) noexcept
{
    if (checkSanity(list, "LClear")) blockOf(list)->numItems = 0;
}

ListType LCopy(ListType list) noexcept
{
    if (!checkSanity(list, "LCopy", "CheckSanity(originalList)")) return nullptr;
    const ListBlock *original = blockOf(list);
    ListType copy = LCreateWithOptions(original->itemSize, original->options, 0, original->memFuncs);
    if (copy == nullptr) return nullptr;
    const int32_t count = std::max(original->numItems, 0);
    if (resizeBlock(copy, static_cast<uint64_t>(count)) != kListNoError) {
        TOLLAN_LOG(ZOR_LOG_WARNING, kSource, "LCopy", "Failed to set list handle size to %d bytes.",
                   static_cast<int>(blockBytes(original->itemSize, static_cast<uint64_t>(count))));
        LDiscard(copy);
        return nullptr;
    }
    ListBlock *block = blockOf(copy);
    block->allocPolicy = original->allocPolicy;
    block->capacity = static_cast<uint32_t>(count);
    std::memcpy(itemsOf(block), itemsOf(blockOf(list)), size_t{block->itemSize} * static_cast<size_t>(count));
    block->numItems = count;
    return copy;
}

int32_t LNumItems(ListType list) noexcept
{
    return checkSanity(list, "LNumItems") ? blockOf(list)->numItems : 0;
}

int32_t LNumItemsSafe(ListType list) noexcept
{
    return list == nullptr ? 0 : LNumItems(list);
}

size_t LListMemSize(ListType list) noexcept
{
    if (list == nullptr || !checkSanity(list, "LListMemSize")) return 0;
    const CollectionMemAllocFunctions *record = tollan::support::defaultListAllocator();
    return record->hSize != nullptr ? record->hSize(handleOf(list)) : 0;
}

void *LGetListDataPtr(ListType list) noexcept
{
    return checkSanity(list, "LGetListDataPtr") ? itemsOf(blockOf(list)) : nullptr;
}
