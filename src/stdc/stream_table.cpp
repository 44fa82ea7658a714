// The stream table: 255 records in one block, three of them the standard
// streams, the rest filled the first time a slot is needed.
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>

#include "platform/c_errno.h"
#include "services/process_object.h"
#include "stdc/stream.h"

namespace tollan::stdc {

Stream streamRecords[kStreamSlots];
// Slot i holds streamRecords[i] once it has been filled; never emptied again.
std::atomic<Stream *> streamSlots[kStreamSlots];

namespace {

Stream *const records = streamRecords;
std::atomic<Stream *> *const slots = streamSlots;

char standardErrorBuffer[80];

platform::RecursiveLock &standardStreamsLock() noexcept
{
    // The standard streams have no lock of their own; they share this one,
    // so that two threads printing at once cannot tear a buffer pointer.
    return services::processObject<platform::RecursiveLock, struct StandardStreamsLockTag>();
}

void startStandard(Stream &stream, uint32_t streamMode, int64_t descriptor, uint32_t streamState) noexcept
{
    // A start-up after a clean-up finds the buffer freed; one without finds
    // the buffer stdin was given at its first read.
    if ((stream.state & state::kOwnsBuffer) != 0) std::free(stream.bufferStart);
    stream = Stream{};
    stream.mode = streamMode;
    stream.descriptor = descriptor;
    stream.state = streamState | state::kInUse;
    stream.slot = static_cast<uint32_t>(descriptor);
}

}  // namespace

void setErrno(int value) noexcept
{
    *platform::cErrnoLocation() = value;
}

Stream *standardStream(int which) noexcept
{
    return &records[which];
}

platform::RecursiveLock &tableLock() noexcept
{
    // Shutdown closes every stream after the process's static objects are gone.
    return services::processObject<platform::RecursiveLock, struct StreamTableLockTag>();
}

// Points every buffer pointer of an idle stream at `start`.
void useBuffer(Stream &stream, char *start, size_t size) noexcept
{
    stream.bufferStart = start;
    stream.bufferEnd = start + size;
    stream.position = stream.readEnd = stream.writeEnd = stream.savedReadEnd = start;
}

void resetStandardStreams() noexcept
{
    startStandard(records[0], mode::kRead, 0, state::kLineBuffered);
    startStandard(records[1], mode::kWrite, 1, state::kUnbuffered);
    useBuffer(records[1], &records[1].oneByte, 1);
    startStandard(records[2], mode::kWrite, 2, state::kUnbuffered);
    useBuffer(records[2], standardErrorBuffer, sizeof standardErrorBuffer);
    for (int i = 0; i < 3; ++i) slots[i].store(&records[i], std::memory_order_release);
}

platform::RecursiveLock &lockOf(Stream &stream) noexcept
{
    platform::RecursiveLock *lock = std::atomic_ref(stream.lock).load(std::memory_order_acquire);
    return lock != nullptr ? *lock : standardStreamsLock();
}

Stream *takeSlot() noexcept
{
    std::lock_guard hold(tableLock());
    for (int i = 0; i < kStreamSlots; ++i) {
        Stream *record = slots[i].load(std::memory_order_relaxed);
        if (record != nullptr && (record->state & state::kInUse) != 0) continue;
        if (record == nullptr) {
            record = &records[i];
            *record = Stream{};
            record->slot = static_cast<uint32_t>(i);
        }
        if (record->lock == nullptr && i >= 3) {
            auto *lock = new (std::nothrow) platform::RecursiveLock;
            if (lock == nullptr) {
                setErrno(ENOMEM);
                return nullptr;
            }
            std::atomic_ref(record->lock).store(lock, std::memory_order_release);
            record->state |= state::kHasLock;
        }
        slots[i].store(record, std::memory_order_release);
        return record;
    }
    setErrno(EMFILE);
    return nullptr;
}

Stream *streamInSlot(int slot) noexcept
{
    return slots[slot].load(std::memory_order_acquire);
}

void StreamAccess::refuse() noexcept
{
    if (held_ != nullptr) held_->unlock();
    held_ = nullptr;
    stream_ = nullptr;
    setErrno(EINVAL);
}

}  // namespace tollan::stdc
