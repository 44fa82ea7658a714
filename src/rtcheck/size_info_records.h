// The block information of memory that library functions hand out: one
// record per block, found by the block's address, kept for the life of the
// process. A freed block's record stays (its size 0), so that the caller's
// stale pointers, whose information points at it, report freed memory; it
// is used again when memory at the same address is handed out again.
#pragma once

#include <cstdint>

#include <tollan/rtcheck.h>

namespace tollan::rtcheck {

struct SizeInfoRecord {
    BlkInfo block;  // first: the caller's pointer information points here
    SizeInfoRecord *next;
    // An array of strings: one pointer information and one block per string;
    // null for a block whose contents are not described.
    PtrInfo *shadow;
    BlkInfo *strings;
    uint64_t stringCount;
    uint64_t capacity;  // strings the two arrays have room for
};

// The record of the block at `base`, made when there is none. Null when
// memory is short, after reporting 191 as fatal.
SizeInfoRecord *recordOf(const void *base) noexcept;

// The record of the block at `base`; null when no library function handed
// one out there.
SizeInfoRecord *existingRecordOf(const void *base) noexcept;

// The record describes `size` bytes of plain contents. A size with the
// unchecked mark, or of 0 (no byte may be used), is kept as given.
void describeBlock(SizeInfoRecord &record, uint64_t size) noexcept;

// The record describes an array of `count` string pointers, followed by a
// null one when `terminated`, each string as its bytes and terminator (a
// null element as a null pointer). False when memory is short (reported as
// 191); the record then describes a block whose bounds are not enforced.
bool describeStrings(SizeInfoRecord &record, char *const *strings, uint64_t count, bool terminated) noexcept;

// Marks the block freed, and the blocks of its strings when `withStrings`.
void markFreed(SizeInfoRecord &record, bool withStrings) noexcept;

// The pointer information of a pointer to the start of the record's block.
PtrInfo pointerTo(const SizeInfoRecord &record) noexcept;

// The information of a null pointer, and of a pointer that is not checked.
PtrInfo nullPointerInfo() noexcept;
PtrInfo uncheckedPointerInfo(const void *value) noexcept;

}  // namespace tollan::rtcheck
