// The table of open files: a singly linked list of slots that is only ever
// appended to while the library lives, so that a slot, once found, stays
// valid. A file's handle is its slot's position in the list plus 3.
#pragma once

#include <atomic>
#include <cstdint>

#include "fmtio/io_error.h"

#include "platform/file.h"
#include "platform/lock.h"
#include "services/library_gate.h"

namespace tollan::fmtio {

// Open flag bits of a slot.
namespace openflag {
inline constexpr uint32_t kRead = 1;
inline constexpr uint32_t kWrite = 2;
inline constexpr uint32_t kBinary = 4;
inline constexpr uint32_t kAppend = 8;
inline constexpr uint32_t kTruncate = 16;
inline constexpr uint32_t kCreate = 32;
}  // namespace openflag

inline constexpr int32_t kFirstHandle = 3;

// States of a slot's in-use flag.
inline constexpr int32_t kSlotFree = 0;
inline constexpr int32_t kSlotOpen = 1;
inline constexpr int32_t kSlotSettingUp = 2;  // taken by an open, not yet usable

struct FileSlot {
    // Set and read under the table lock (taking and freeing a slot) and under
    // the slot's own lock (each operation checks it again once it holds that).
    std::atomic<int32_t> inUse{kSlotFree};
    // The fields below belong to whoever holds the slot's lock.
    platform::NativeFile osFile = platform::kNoFile;
    uint32_t openFlags = 0;
    bool diskFile = false;
    // A byte read ahead (see readText) from a file that cannot move back over
    // it; the next read returns it first. -1: none.
    int pendingByte = -1;
    FileSlot *next = nullptr;
    platform::RecursiveLock lock;
};

// Makes the table lock; false when it cannot be had.
bool createFileTable() noexcept;
// Closes the gate, waits for the calls inside to leave, then closes every open
// file (committing written data first when commit mode is on) and frees the
// slots and the table lock. When a call stays inside past the shutdown wait,
// everything is left as it is.
void destroyFileTable() noexcept;

// Puts an open OS file into the first free slot, or a new slot at the end,
// and has resource tracking record it under "Files" with its path. Returns
// its handle, or -1 when no slot can be had (the file stays open).
int32_t attachFile(platform::NativeFile osFile, uint32_t openFlags, const char *path) noexcept;

// The gate of every call that reaches the table. Once shutdown has begun the
// table is gone: operations on a handle fail with I/O error 3 and opens with
// 2 (kNotAvailable).
services::LibraryGate &fileTableGate() noexcept;
inline constexpr int32_t kNotAvailable = ioerror::kGeneral;

// One operation's hold on an open file: passes the table's gate, looks the
// handle up under the table lock, then holds the slot's lock until destroyed.
// Empty when the handle names no open file or the library has shut down.
class LockedFile {
public:
    explicit LockedFile(int32_t handle) noexcept;
    ~LockedFile();
    LockedFile(const LockedFile &) = delete;
    LockedFile &operator=(const LockedFile &) = delete;

    explicit operator bool() const noexcept { return slot_ != nullptr; }
    FileSlot &operator*() const noexcept { return *slot_; }
    FileSlot *operator->() const noexcept { return slot_; }

    // Frees the slot for the next open and gives up the hold; the caller
    // closes the OS file it took out before.
    void release() noexcept;

private:
    services::GatePass pass_;
    FileSlot *slot_ = nullptr;
};

// Process-wide commit mode: ZOR_CloseFile commits written data first.
bool commitMode() noexcept;
void setCommitMode(bool on) noexcept;

// Commits (in commit mode, for a file with write access) and closes the OS
// file of a locked slot, freeing the slot. 0 or an I/O error; after a failed
// commit the file stays open.
int32_t closeLockedFile(LockedFile &file) noexcept;

}  // namespace tollan::fmtio
