#include "fmtio/io_error.h"
#include "fmtio/file_table.h"

#include <mutex>
#include <new>

#include <tollan/debugger.h>

#include "fmtio/log_module.h"
#include "logger/log.h"
#include "services/library_gate.h"
#include "services/resource_failure.h"

namespace tollan::fmtio {
namespace {

// Guards the list's shape and the taking and freeing of slots; held only
// briefly and never together with a slot's lock.
platform::RecursiveLock *tableLock = nullptr;
FileSlot *firstSlot = nullptr;
// Every call that reaches the table passes here; shutdown closes it first.
constinit services::LibraryGate gate;

std::atomic<bool> commitOn{false};

// Finds a free slot, or appends one, and marks it as being set up.
// Returns it with its position, or null when no memory is left.
FileSlot *takeSlot(int32_t *position) noexcept
{
    std::lock_guard guard(*tableLock);
    int32_t index = 0;
    FileSlot **link = &firstSlot;
    for (; *link != nullptr; link = &(*link)->next, ++index) {
        int32_t expected = kSlotFree;
        if ((*link)->inUse.compare_exchange_strong(expected, kSlotSettingUp)) {
            *position = index;
            return *link;
        }
    }
    FileSlot *fresh = new (std::nothrow) FileSlot;
    if (fresh == nullptr) return nullptr;
    fresh->inUse.store(kSlotSettingUp);
    *link = fresh;
    *position = index;
    return fresh;
}

FileSlot *findOpenSlot(int32_t handle) noexcept
{
    if (tableLock == nullptr || handle < kFirstHandle) return nullptr;
    std::lock_guard guard(*tableLock);
    FileSlot *slot = firstSlot;
    for (int32_t index = handle - kFirstHandle; slot != nullptr && index > 0; --index) slot = slot->next;
    if (slot == nullptr || slot->inUse.load() != kSlotOpen) return nullptr;
    return slot;
}

}  // namespace

services::LibraryGate &fileTableGate() noexcept
{
    return gate;
}

bool createFileTable() noexcept
{
    if (tableLock == nullptr) tableLock = new (std::nothrow) platform::RecursiveLock;
    if (tableLock == nullptr) {
        TOLLAN_RESOURCE_FAILURE(kLogModule, "FmtIOLibInitOnce", "no memory for the file table's lock");
        return false;
    }
    gate.open();
    return true;
}

void destroyFileTable() noexcept
{
    if (tableLock == nullptr) return;
    if (!gate.close(services::shutdownWaitMs())) {
        // A call is still inside (waiting for input, say) and may hold a
        // file's lock: the table stays as it is, and the system closes the
        // files when the process ends.
        TOLLAN_LOG(ZOR_LOG_WARNING, kLogModule, "FmtIOLibCleanup",
                   "a file function is still running: files are left to the system");
        return;
    }
    // No call is inside and none can come in: the slots are ours alone.
    int32_t handle = kFirstHandle;
    for (FileSlot *slot = firstSlot; slot != nullptr; slot = slot->next, ++handle) {
        if (slot->inUse.load() != kSlotOpen) continue;
        const platform::NativeFile osFile = slot->osFile;
        if (commitMode() && (slot->openFlags & openflag::kWrite) != 0 &&
            platform::flushFile(osFile) != platform::FileError::none)
            TOLLAN_LOG(ZOR_LOG_WARNING, kLogModule, "FmtIOLibCleanup",
                       "could not commit file handle %d before closing it", handle);
        platform::closeFile(osFile);
        __ZOR_Resource_Release(slot);
        slot->inUse.store(kSlotFree);
    }
    while (firstSlot != nullptr) {
        FileSlot *next = firstSlot->next;
        delete firstSlot;
        firstSlot = next;
    }
    delete tableLock;
    tableLock = nullptr;
}

int32_t attachFile(platform::NativeFile osFile, uint32_t openFlags, const char *path) noexcept
{
    if (tableLock == nullptr) return -1;
    int32_t position = 0;
    FileSlot *slot = takeSlot(&position);
    if (slot == nullptr) {
        TOLLAN_RESOURCE_FAILURE(kLogModule, "ZOR_OpenFile", "no memory for a file table entry");
        return -1;
    }
    {
        std::lock_guard guard(slot->lock);
        slot->osFile = osFile;
        slot->openFlags = openFlags;
        slot->diskFile = platform::isDiskFile(osFile);
        slot->pendingByte = -1;
        slot->inUse.store(kSlotOpen);
    }
    // The slot is the file's name for resource tracking: unlike the handle
    // number, no other library hands out the same value.
    const int32_t handle = position + kFirstHandle;
    __ZOR_Resource_Acquire(slot, "Files", "File handle %d \"%s\"", static_cast<int>(handle), path);
    return handle;
}

LockedFile::LockedFile(int32_t handle) noexcept : pass_(gate)
{
    if (!pass_) return;
    FileSlot *slot = findOpenSlot(handle);
    if (slot == nullptr) return;
    slot->lock.lock();
    // Closed (and perhaps taken by another open) while this thread waited.
    if (slot->inUse.load() != kSlotOpen) {
        slot->lock.unlock();
        return;
    }
    slot_ = slot;
}

LockedFile::~LockedFile()
{
    if (slot_ != nullptr) slot_->lock.unlock();
}

void LockedFile::release() noexcept
{
    __ZOR_Resource_Release(slot_);
    slot_->osFile = platform::kNoFile;
    slot_->inUse.store(kSlotFree);
    slot_->lock.unlock();
    slot_ = nullptr;
}

bool commitMode() noexcept
{
    return commitOn.load(std::memory_order_relaxed);
}

void setCommitMode(bool on) noexcept
{
    commitOn.store(on, std::memory_order_relaxed);
}

int32_t closeLockedFile(LockedFile &file) noexcept
{
    if (commitMode() && (file->openFlags & openflag::kWrite) != 0) {
        const int32_t error = ioErrorOf(platform::flushFile(file->osFile));
        if (error != ioerror::kNone) return error;
    }
    const platform::NativeFile osFile = file->osFile;
    file.release();
    return ioErrorOf(platform::closeFile(osFile));
}

}  // namespace tollan::fmtio
