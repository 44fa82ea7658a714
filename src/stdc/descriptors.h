// The C library's numbered low-level files. A descriptor is its entry's
// place in the list plus 3; 0, 1 and 2 are the process's standard input,
// output and error. Entries are added at the end when none is free, reused
// once closed, and never removed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/file.h"

namespace tollan::stdc {

namespace lowflag {
inline constexpr uint32_t kRead = 1;
inline constexpr uint32_t kWrite = 2;
inline constexpr uint32_t kBinary = 4;
inline constexpr uint32_t kAppend = 8;
inline constexpr uint32_t kTruncate = 16;
inline constexpr uint32_t kCreate = 32;
inline constexpr uint32_t kExclusive = 64;
inline constexpr uint32_t kTemporary = 128;
inline constexpr uint32_t kSequential = 256;
inline constexpr uint32_t kRandom = 512;
inline constexpr uint32_t kAll = 1023;
}  // namespace lowflag

inline constexpr int kFirstDescriptor = 3;

// The errno value of a failed file call.
int errnoOf(platform::FileError error) noexcept;

// Opens path with the flags above, the share value (0 others may read and
// write, 1 others may write, 2 others may read, 3 none) and the permission
// (no write bit of 0x222: read-only when created). The descriptor, or -1
// with errno: 22 for a bad flag or share value, 12 when the list is full.
// The descriptor is recorded by resource tracking.
int openDescriptor(const char *path, uint32_t flags, int share, int permission) noexcept;

// Reads at most count bytes; a text-mode read gives LF for CR LF. The bytes
// read, 0 at the end, -1 with errno on failure (9 for a bad descriptor; 1
// and 2 are refused).
int64_t readDescriptor(int descriptor, void *buffer, size_t count, uint32_t flags) noexcept;

// Writes count bytes (text mode: each LF as CR LF; append: at the end of a
// disk file). The caller's bytes written, or -1 with errno (0 is refused).
// Writes to 1 and 2 go to the debugger's output hook and the standard I/O
// pipe first.
int64_t writeDescriptor(int descriptor, const void *bytes, size_t count, uint32_t flags) noexcept;

// lseek: the new position, or -1 with errno; 0 for descriptors 0 to 2.
int64_t seekDescriptor(int descriptor, int64_t offset, int whence) noexcept;

// 0, or -1 with errno 9 (also for 0 to 2).
int closeDescriptor(int descriptor) noexcept;

// Hands the descriptor's written data to the system: write() did so
// already, so this only proves the descriptor still stands. 0 or -1.
int commitDescriptor(int descriptor) noexcept;

// 1 at the end of the file, 0 before it (also for 0 to 2), -1 with errno.
int descriptorAtEnd(int descriptor) noexcept;

// The open flags of an open descriptor (0 to 2: read or write as they
// stand); false when it is not open.
bool descriptorFlags(int descriptor, uint32_t *flags) noexcept;

// The handle resource tracking knows the descriptor by; null when not open.
void *descriptorTrackingHandle(int descriptor) noexcept;

// Newlines in [begin, end): each stood for CR LF in a text-mode file.
size_t countNewlines(const char *begin, const char *end) noexcept;

}  // namespace tollan::stdc
