// The default allocation callbacks: relocatable blocks of the library's heap. A handle
// points at the first field of a small master record that also keeps the
// block's size and a lock count; a locked block may shrink but never moves.
#include "support/list_allocator.h"

#include "services/memory.h"

namespace tollan::support {
namespace {

struct MasterRecord {
    void *block;  // first: the handle is the address of this field
    size_t size;
    uint32_t lockCount;
};

CollectionMemAllocFunctions defaultRecord{};

MasterRecord *masterOf(void **handle) noexcept
{
    return reinterpret_cast<MasterRecord *>(handle);
}

void **newHand(size_t byteSize, uint32_t, uint32_t, const CollectionMemAllocFunctions *) noexcept
{
    auto *master = static_cast<MasterRecord *>(services::allocateBlock(sizeof(MasterRecord)));
    if (master == nullptr) return nullptr;
    master->block = services::allocateBlock(byteSize);
    if (master->block == nullptr) {
        services::freeBlock(master);
        return nullptr;
    }
    master->size = byteSize;
    master->lockCount = 0;
    return &master->block;
}

void disposeHand(void **handle) noexcept
{
    if (handle == nullptr) return;
    MasterRecord *master = masterOf(handle);
    services::freeBlock(master->block);
    services::freeBlock(master);
}

int32_t setHSz(void **handle, size_t byteSize) noexcept
{
    MasterRecord *master = masterOf(handle);
    if (master->lockCount > 0) {
        if (byteSize > master->size) return kListErrHandleLocked;
        master->size = byteSize;
        return kListNoError;
    }
    void *moved = services::resizeBlock(master->block, byteSize);
    if (moved == nullptr) return kListErrMemoryFull;
    master->block = moved;
    master->size = byteSize;
    return kListNoError;
}

void *newPtr(size_t byteSize, const CollectionMemAllocFunctions *) noexcept
{
    return services::allocateBlock(byteSize);
}

void disposePtr(void *block) noexcept
{
    services::freeBlock(block);
}

void hLock(void **handle) noexcept
{
    ++masterOf(handle)->lockCount;
}

void hUnlock(void **handle) noexcept
{
    MasterRecord *master = masterOf(handle);
    if (master->lockCount > 0) --master->lockCount;
}

size_t hSize(void **handle) noexcept
{
    return masterOf(handle)->size;
}

}  // namespace

void installDefaultListAllocator() noexcept
{
    SetCollectionMemAllocFunctions(&defaultRecord, newHand, newPtr, disposeHand, disposePtr, setHSz, hLock,
                                   hUnlock, hSize);
}

const CollectionMemAllocFunctions *defaultListAllocator() noexcept
{
    return &defaultRecord;
}

}  // namespace tollan::support

const CollectionMemAllocFunctions *GetDefaultCollectionMemAllocFunctions() noexcept
{
    return tollan::support::defaultListAllocator();
}
