// The C library's stream record and the table that holds every stream.
//
// A record is never freed while the library is loaded: a closed stream keeps
// its slot, buffer-less, for the next open, so a pointer once handed out
// always points at a record, and a call can look at the record's lock and
// state without first proving it was not freed under it.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "platform/lock.h"
#include "platform/thread.h"

namespace tollan::stdc {

namespace mode {
inline constexpr uint32_t kRead = 1;
inline constexpr uint32_t kWrite = 2;
inline constexpr uint32_t kAppend = 4;
inline constexpr uint32_t kBinary = 8;
inline constexpr uint32_t kCreate = 16;
inline constexpr uint32_t kTruncate = 32;
inline constexpr uint32_t kFromDescriptor = 64;
}  // namespace mode

namespace state {
inline constexpr uint32_t kOwnsBuffer = 1;
inline constexpr uint32_t kHasLock = 2;
inline constexpr uint32_t kEndOfFile = 4;
inline constexpr uint32_t kError = 8;
inline constexpr uint32_t kLineBuffered = 16;
inline constexpr uint32_t kUnbuffered = 32;
inline constexpr uint32_t kReadData = 64;
inline constexpr uint32_t kWriteData = 128;
inline constexpr uint32_t kInUse = 256;
}  // namespace state

inline constexpr int kStreamSlots = 255;
inline constexpr size_t kBufferSize = 512;
inline constexpr int kPushBackLimit = 6;

// Reading serves position..readEnd; writing fills position..writeEnd. While
// pushed-back bytes wait, readEnd is held at position (so the quick path of
// a read falls through to them) and the real end waits in savedReadEnd.
struct alignas(32) Stream {
    uint32_t mode;
    uint32_t state;
    int64_t descriptor;
    char *bufferStart;
    char *bufferEnd;
    char *position;
    char *readEnd;
    char *writeEnd;
    char *savedReadEnd;
    unsigned char pushedBack[kPushBackLimit];
    int8_t pushedCount;
    char oneByte;
    char *temporaryName;
    platform::RecursiveLock *lock;
    uint32_t slot;
};

static_assert(sizeof(Stream) == 96);
static_assert(offsetof(Stream, descriptor) == 8);
static_assert(offsetof(Stream, bufferStart) == 16);
static_assert(offsetof(Stream, savedReadEnd) == 56);
static_assert(offsetof(Stream, pushedBack) == 64);
static_assert(offsetof(Stream, pushedCount) == 70);
static_assert(offsetof(Stream, oneByte) == 71);
static_assert(offsetof(Stream, temporaryName) == 72);
static_assert(offsetof(Stream, lock) == 80);

// Sets the calling thread's errno of the C library.
void setErrno(int value) noexcept;

// The three standard streams (0 stdin, 1 stdout, 2 stderr).
Stream *standardStream(int which) noexcept;

// The stream-table lock: slot allocation, the opens and fflush(NULL).
platform::RecursiveLock &tableLock() noexcept;

// The lock a call on `stream` holds: its own, or for the three standard
// streams (which have none) one lock they share.
platform::RecursiveLock &lockOf(Stream &stream) noexcept;

// Takes a free slot (under the table lock): a closed record, or a new one
// with its lock. Null with errno 24 when all 255 are in use.
Stream *takeSlot() noexcept;
// The record of slot i (0..254), or null when the slot was never filled.
Stream *streamInSlot(int slot) noexcept;

// Points every buffer pointer of an idle stream at `start` (size bytes).
void useBuffer(Stream &stream, char *start, size_t size) noexcept;

// Puts the three standard streams in their start-up state.
void resetStandardStreams() noexcept;

// The records of the table, in one block, and the slots that hold them.
extern Stream streamRecords[kStreamSlots];
extern std::atomic<Stream *> streamSlots[kStreamSlots];

// The record `candidate` points at, or null when it points at none: a
// pointer into the block, at a record's start, whose slot holds it.
inline Stream *recordAt(const void *candidate) noexcept
{
    const auto address = reinterpret_cast<uintptr_t>(candidate);
    const auto first = reinterpret_cast<uintptr_t>(&streamRecords[0]);
    if (address - first >= sizeof streamRecords || (address - first) % sizeof(Stream) != 0) return nullptr;
    Stream *record = &streamRecords[(address - first) / sizeof(Stream)];
    return streamSlots[record->slot].load(std::memory_order_acquire) == record ? record : nullptr;
}

// One call's hold on a stream: looks the pointer up (a pointer that is not a
// record of the table, or a record not in use, sets errno 22 and gives
// false) and holds the stream's lock until the call returns. Inline, for
// the calls that move one byte.
class StreamAccess {
public:
    explicit StreamAccess(const void *candidate) noexcept : stream_(recordAt(candidate))
    {
        // A process that never had a second thread has nobody to keep out:
        // the lock would cost more than the rest of a getc.
        if (stream_ != nullptr && !platform::processHasOnlyOneThread()) {
            held_ = &lockOf(*stream_);
            held_->lock();
        }
        if (stream_ == nullptr || (stream_->state & state::kInUse) == 0) refuse();
    }
    ~StreamAccess()
    {
        if (held_ != nullptr) held_->unlock();
    }
    StreamAccess(const StreamAccess &) = delete;
    StreamAccess &operator=(const StreamAccess &) = delete;

    explicit operator bool() const noexcept { return stream_ != nullptr; }
    Stream &operator*() const noexcept { return *stream_; }
    Stream *operator->() const noexcept { return stream_; }

private:
    // Errno 22, the lock let go, no stream.
    void refuse() noexcept;

    Stream *stream_;
    platform::RecursiveLock *held_ = nullptr;
};

}  // namespace tollan::stdc
