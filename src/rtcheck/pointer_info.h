// What the pointer checks and the library argument checks share: the
// predefined pointer information, the distance of an address from a block,
// the block that stands for freed static storage, and the calling thread's
// hand-over of pointer information across a call.
#pragma once

#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/checking_environment.h"

namespace tollan::rtcheck {

// Predefined entries with a meaning of their own; the others describe a
// pointer at a byte offset into a scalar object without a block.
enum PredefinedEntry : int {
    kFunctionEntry = 43,           // pointer to a function
    kEnforcedUncheckedEntry = 44,  // into an unchecked block whose bounds are enforced anyway
    kUninitializedEntry = 45,
    kInvalidEntry = 46,  // the result of a failed check
    kNullEntry = 47,
    kUncheckedEntry = 48,  // arithmetic unchecked; only a null dereference is reported
    kFirstReplacedEntry = 49,
    kLastReplacedEntry = 50,  // 49 and 50: an assignment stores entry 48 instead
};

// The address of predefined entry `index` (0 to 72).
PtrInfo *predefinedEntry(int index) noexcept;

// The entry `info` stands for: its index when info is a small integer 1 to
// 73 or the address of an entry; -1 for any other value.
int predefinedIndex(const void *info) noexcept;

// info itself, or the entry's address when it is a small integer 1 to 73.
PtrInfo *resolvePtrInfo(PtrInfo *info) noexcept;

// Values from 74 to 4095 are neither table entries nor addresses of
// records: the checks refuse them without reading through them.
bool isImplausibleRecord(const void *record) noexcept;

// Whether entry `index` describes a byte offset into a scalar object, and
// the lowest (-offset) and highest (size - offset) byte displacement it
// permits.
bool isScalarEntry(int index) noexcept;
int lowestDisplacement(int index) noexcept;
int highestDisplacement(int index) noexcept;

// The out-of-bounds distance of address from blk: negative before the base,
// 1 for one byte past the end, 0 inside. The unchecked mark is ignored.
int64_t outOfBoundsDistance(uint64_t address, const BlkInfo &blk) noexcept;

// The size of blk in bytes without the unchecked mark.
inline uint64_t blockSize(const BlkInfo &blk) noexcept
{
    return blk.size & ~ZOR_BLK_UNCHECKED;
}

// The block that stands for freed static storage (null until registered).
const BlkInfo *staticFreeBlock() noexcept;
void setStaticFreeBlock(const BlkInfo *blk) noexcept;

// The function a call through `entry` reaches: relative jumps (0xE9) and
// indirect jumps through memory (0xFF 0x25) are followed to their target.
const void *followJumpStubs(const void *entry) noexcept;

// The calling thread's hand-over area; null when the thread has no record.
ParameterArea *parameterArea() noexcept;

// The slot of argument argpos (counted from 1) that the caller filled for
// the function at `frame`: null when the call recorded by the caller goes to
// another function, or the slot was not filled.
const ParameterSlot *callerSlot(int32_t argpos, const void *frame) noexcept;

}  // namespace tollan::rtcheck
