// What the pointer checks and the library argument checks share: the
// predefined pointer information, the distance of an address from a block,
// the block that stands for freed static storage, and the calling thread's
// hand-over of pointer information across a call.
#pragma once

#include <atomic>
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
    // What a call's result carries until the callee hands its information
    // back: a callee that never does (code built without checks) leaves the
    // caller with an unchecked result.
    kNothingReturnedEntry = 51,
    // What a checked function hands back when it ends without a return
    // value: the caller is warned and the result is uninitialised.
    kMissingReturnEntry = 52,
    // 53 and 54 are reserved: fixed entries without a block, which no check
    // looks into.
};

// The records themselves are never written; only their addresses matter.
extern PtrInfo predefinedTable[ZOR_PREDEFINED_PTRINFO_COUNT];

// Below this no record can lie: values up to the entry count are table
// entries, the others (null included) are refused without being read.
inline constexpr uintptr_t kLowestRecordAddress = 4096;

// What a PtrInfo argument stands for: the record and its entry index in the
// table, -1 for a record of the program's own. Null and the values 74 to
// 4095 carry no information and stand for entry 48, without being read.
struct ResolvedInfo {
    PtrInfo *record;
    int entry;
};
inline ResolvedInfo classifyInfo(PtrInfo *info) noexcept
{
    const auto value = reinterpret_cast<uintptr_t>(info);
    if (value - 1 < ZOR_PREDEFINED_PTRINFO_COUNT) {
        const int entry = static_cast<int>(value - 1);
        return {&predefinedTable[entry], entry};
    }
    const uintptr_t intoTable = value - reinterpret_cast<uintptr_t>(&predefinedTable[0]);
    if (intoTable < sizeof predefinedTable) {
        const int entry = static_cast<int>(intoTable / sizeof(PtrInfo));
        return {&predefinedTable[entry], entry};
    }
    if (value < kLowestRecordAddress) return {&predefinedTable[kUncheckedEntry], kUncheckedEntry};
    return {info, -1};
}

// Whether blk is a block record of the program's own: not null, not a table
// entry, not a refused small value.
inline bool isRealBlock(const BlkInfo *blk) noexcept
{
    const auto value = reinterpret_cast<uintptr_t>(blk);
    return value >= kLowestRecordAddress &&
           value - reinterpret_cast<uintptr_t>(&predefinedTable[0]) >= sizeof predefinedTable;
}

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

// The size of blk in bytes without the unchecked mark.
inline uint64_t blockSize(const BlkInfo &blk) noexcept
{
    return blk.size & ~ZOR_BLK_UNCHECKED;
}

// The out-of-bounds distance of address from blk: negative before the base,
// 1 for one byte past the end, 0 inside. The unchecked mark is ignored.
inline int64_t outOfBoundsDistance(uint64_t address, const BlkInfo &blk) noexcept
{
    // Unsigned differences read back as signed: distances near 2^63 wrap as
    // the addresses themselves do.
    if (address < blk.base) return static_cast<int64_t>(address - blk.base);
    const uint64_t end = blk.base + blockSize(blk);
    if (address >= end) return static_cast<int64_t>(address - end + 1);
    return 0;
}

// The block that stands for freed static storage (null until registered).
extern std::atomic<const BlkInfo *> staticFreeBlockRecord;
inline const BlkInfo *staticFreeBlock() noexcept
{
    return staticFreeBlockRecord.load(std::memory_order_acquire);
}
void setStaticFreeBlock(const BlkInfo *blk) noexcept;

// The function a call through `entry` reaches: relative jumps (0xE9) and
// indirect jumps through memory (0xFF 0x25) are followed to their target.
const void *followJumpStubs(const void *entry) noexcept;

// The calling thread's hand-over area; null when the thread has no record.
ParameterArea *parameterArea() noexcept;

// The hand-over area at env, the checking environment that compiled code
// passes (ZORThreadEnv::checkingEnvironment); the calling thread's own when
// env is null.
inline ParameterArea *parameterArea(void *env) noexcept
{
    // The environment's bytes are the storage of the area that compiled code fills.
    return env != nullptr
               ? reinterpret_cast<ParameterArea *>(static_cast<unsigned char *>(env) + kParameterAreaOffset)
               : parameterArea();
}

// The slot of argument argpos (counted from 1) that the caller filled for
// the function at `frame`: null when the call recorded by the caller goes to
// another function, or the slot was not filled.
const ParameterSlot *callerSlot(int32_t argpos, const void *frame) noexcept;
// The same for the hand-over area `area` (null: none).
const ParameterSlot *callerSlot(const ParameterArea *area, int32_t argpos, const void *frame) noexcept;

}  // namespace tollan::rtcheck
