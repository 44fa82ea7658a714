// Lists whose items are pointers to blocks that the list owns: deep copy and
// disposal through the record's NewPtr and DisposePtr.
#include "logger/log.h"
#include "support/list_internal.h"

namespace tollan::support::list {
namespace {

void *pointerAt(ListType list, int32_t position) noexcept
{
    void *pointer;
    std::memcpy(&pointer, slotAddress(blockOf(list), position), sizeof pointer);
    return pointer;
}

bool holdsPointers(ListType list, const char *function) noexcept
{
    if (blockOf(list)->itemSize == sizeof(void *)) return true;
    assertFailed("(*theList)->itemSize == sizeof(void *)", function);
    return false;
}

// Appends a copy of the block `source` points to; false when the copy could
// not be made or kept.
bool appendBlockCopy(ListType copy, const void *source, ListPtrSizeFunction sizeFunction) noexcept
{
    const size_t size = sizeFunction(source);
    void *duplicate = Call_ListNewPtrFunc(copy, size);
    if (duplicate == nullptr) return false;
    std::memcpy(duplicate, source, size);
    if (LInsertItem(copy, &duplicate, kEndOfList) == kListNoError) return true;
    TOLLAN_LOG(ZOR_LOG_WARNING, kSource, "LCopyPtrList",
               "Failed to insert list item while copying pointer list.");
    Call_ListDisposePtrFunc(copy, duplicate);
    return false;
}

}  // namespace

void disposeItemBlocks(ListType list, int32_t first, int32_t count) noexcept
{
    for (int32_t position = first; position < first + count; ++position) {
        void *pointer = pointerAt(list, position);
        if (pointer != nullptr) Call_ListDisposePtrFunc(list, pointer);
    }
}

}  // namespace tollan::support::list

using namespace tollan::support::list;

ListType LCopyPtrList(ListType list, ListPtrSizeFunction sizeFunction) noexcept
{
    if (!checkSanity(list, "LCopyPtrList", "CheckSanity(originalList)")) return nullptr;
    if (sizeFunction == nullptr) {
        assertFailed("sizeFunction", "LCopyPtrList");
        return nullptr;
    }
    if (!holdsPointers(list, "LCopyPtrList")) return nullptr;
    ListType copy = LCopy(list);
    if (copy == nullptr) {
        TOLLAN_LOG(ZOR_LOG_WARNING, kSource, "LCopyPtrList", "Failed to copy list.");
        return nullptr;
    }
    // The copy has room for every pointer; it is refilled with the duplicates.
    LClear(copy);
    const int32_t count = blockOf(list)->numItems;
    for (int32_t position = 1; position <= count; ++position) {
        const void *source = pointerAt(list, position);
        if (source == nullptr || appendBlockCopy(copy, source, sizeFunction)) continue;
        disposeItemBlocks(copy, 1, blockOf(copy)->numItems);
        LDiscard(copy);
        return nullptr;
    }
    return copy;
}

void LDiscardPtrList(ListType list) noexcept
{
    if (list == nullptr || !checkSanity(list, "LDiscardPtrList") || !holdsPointers(list, "LDiscardPtrList"))
        return;
    disposeItemBlocks(list, 1, blockOf(list)->numItems);
    LDiscard(list);
}
