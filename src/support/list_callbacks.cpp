// Calls through a list's allocation-callback record, and filling a record.
#include "support/list_internal.h"

namespace tollan::support::list {
namespace {

// The list's record when it has the wanted slot; else reports and yields null.
const CollectionMemAllocFunctions *recordWith(ListType list,
                                              bool (*hasSlot)(const CollectionMemAllocFunctions &),
                                              const char *function, Where where = Where::current()) noexcept
{
    const CollectionMemAllocFunctions *record = blockOf(list)->memFuncs;
    if (record != nullptr && hasSlot(*record)) return record;
    assertFailed("(*list)->memFuncs", function, where);
    return nullptr;
}

}  // namespace

void *Call_ListNewPtrFunc(ListType list, size_t byteSize) noexcept
{
    const auto *record = recordWith(
        list, [](const CollectionMemAllocFunctions &r) { return r.newPtr != nullptr; },
        "Call_ListNewPtrFunc");
    return record != nullptr ? record->newPtr(byteSize, record) : nullptr;
}

void Call_ListDisposePtrFunc(ListType list, void *block) noexcept
{
    const auto *record = recordWith(
        list, [](const CollectionMemAllocFunctions &r) { return r.disposePtr != nullptr; },
        "Call_ListDisposePtrFunc");
    if (record != nullptr) record->disposePtr(block);
}

void Call_ListDisposeHandFunc(ListType list, const CollectionMemAllocFunctions *record) noexcept
{
    if (record == nullptr || record->disposeHand == nullptr) {
        assertFailed("(*list)->memFuncs", "Call_ListDisposeHandFunc");
        return;
    }
    record->disposeHand(handleOf(list));
}

int32_t Call_ListSetHSzFunc(ListType list, size_t byteSize) noexcept
{
    const auto *record = recordWith(
        list, [](const CollectionMemAllocFunctions &r) { return r.setHSz != nullptr; },
        "Call_ListSetHSzFunc");
    return record != nullptr ? record->setHSz(handleOf(list), byteSize) : kListErrArgument;
}

void Call_ListHLockFunc(ListType list) noexcept
{
    const auto *record = recordWith(
        list, [](const CollectionMemAllocFunctions &r) { return r.hLock != nullptr; }, "Call_ListHLockFunc");
    if (record != nullptr) record->hLock(handleOf(list));
}

void Call_ListHUnlockFunc(ListType list) noexcept
{
    const auto *record = recordWith(
        list, [](const CollectionMemAllocFunctions &r) { return r.hUnlock != nullptr; },
        "Call_ListHUnlockFunc");
    if (record != nullptr) record->hUnlock(handleOf(list));
}

}  // namespace tollan::support::list

using namespace tollan::support::list;

void SetCollectionMemAllocFunctions(CollectionMemAllocFunctions *record, ListNewHandFunction newHand,
                                    ListNewPtrFunction newPtr, ListDisposeHandFunction disposeHand,
                                    ListDisposePtrFunction disposePtr, ListSetHSzFunction setHSz,
                                    ListHLockFunction hLock, ListHUnlockFunction hUnlock,
                                    ListHSizeFunction hSize) noexcept
{
    if (record == nullptr) {
        assertFailed("collectionMemAllocFunctions", "SetCollectionMemAllocFunctions");
        return;
    }
    *record =
        CollectionMemAllocFunctions{newHand, disposeHand, setHSz, newPtr, disposePtr, hLock, hUnlock, hSize};
}
