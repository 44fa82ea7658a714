#include "list_fixtures.h"

#include <gtest/gtest.h>

#include "support/list_allocator.h"

namespace listtest {
namespace {

const CollectionMemAllocFunctions &base()
{
    return *GetDefaultCollectionMemAllocFunctions();
}

CollectionMemAllocFunctions probeRecord;

// Start-up installs the default record; the environment notes whether it did
// before making sure of it, so that a broken chain fails one test, not all.
struct DefaultRecordInstalled : testing::Environment {
    void SetUp() override
    {
        defaultRecordInstalledAtStartup = base().newHand != nullptr;
        tollan::support::installDefaultListAllocator();
    }
};
[[maybe_unused]] testing::Environment *const defaultRecordInstalled =
    testing::AddGlobalTestEnvironment(new DefaultRecordInstalled);

}  // namespace

bool defaultRecordInstalledAtStartup;

int ProbeAllocator::newHand, ProbeAllocator::disposeHand, ProbeAllocator::setHSz, ProbeAllocator::newPtr,
    ProbeAllocator::disposePtr, ProbeAllocator::hLock, ProbeAllocator::hUnlock;
int ProbeAllocator::newPtrsBeforeFailure;
bool ProbeAllocator::setHSzFails;
bool ProbeAllocator::newHandFails;

const CollectionMemAllocFunctions *ProbeAllocator::reset()
{
    newHand = disposeHand = setHSz = newPtr = disposePtr = hLock = hUnlock = 0;
    newPtrsBeforeFailure = -1;
    setHSzFails = newHandFails = false;
    SetCollectionMemAllocFunctions(
        &probeRecord,
        [](size_t size, uint32_t options, uint32_t capacity, const CollectionMemAllocFunctions *) -> void ** {
            if (newHandFails) return nullptr;
            ++newHand;
            return base().newHand(size, options, capacity, &probeRecord);
        },
        [](size_t size, const CollectionMemAllocFunctions *) -> void * {
            if (newPtrsBeforeFailure == 0) return nullptr;
            if (newPtrsBeforeFailure > 0) --newPtrsBeforeFailure;
            ++newPtr;
            return base().newPtr(size, &probeRecord);
        },
        [](void **handle) {
            ++disposeHand;
            base().disposeHand(handle);
        },
        [](void *block) {
            ++disposePtr;
            base().disposePtr(block);
        },
        [](void **handle, size_t size) -> int32_t {
            ++setHSz;
            return setHSzFails ? 2 : base().setHSz(handle, size);
        },
        [](void **handle) {
            ++hLock;
            base().hLock(handle);
        },
        [](void **handle) {
            ++hUnlock;
            base().hUnlock(handle);
        },
        base().hSize);
    return &probeRecord;
}

int32_t compareInts(const void *a, const void *b)
{
    const int32_t x = *static_cast<const int32_t *>(a);
    const int32_t y = *static_cast<const int32_t *>(b);
    return (x > y) - (x < y);
}

int32_t insert(ListType list, int32_t value, int32_t position)
{
    return LInsertItem(list, &value, position);
}

ListType intList(const std::vector<int32_t> &values, const CollectionMemAllocFunctions *record)
{
    ListType list = LCreateWithOptions(sizeof(int32_t), 0, 0, record != nullptr ? record : &base());
    for (int32_t value : values) insert(list, value, kEndOfList);
    return list;
}

std::vector<int32_t> itemsOf(ListType list)
{
    const auto *first = static_cast<const int32_t *>(LGetListDataPtr(list));
    return std::vector<int32_t>(first, first + LNumItems(list));
}

}  // namespace listtest
