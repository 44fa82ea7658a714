// What the list's source files share: block access, the sanity and argument
// checks that report through the logger, the callback wrappers and growth.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <source_location>

#include <tollan/list.h>

namespace tollan::support::list {

// The source name the list reports its assertions and log lines under.
inline constexpr const char *kSource = "list.c";

// The block behind a handle. Read with memcpy: the allocator stores the
// master pointer as a plain void *.
inline ListBlock *blockOf(ListType list) noexcept
{
    ListBlock *block;
    std::memcpy(&block, list, sizeof block);
    return block;
}

inline void **handleOf(ListType list) noexcept
{
    return reinterpret_cast<void **>(list);
}

inline char *itemsOf(ListBlock *block) noexcept
{
    return reinterpret_cast<char *>(block + 1);
}

// The address of the item at a 1-based position (0 is the slot before item 1).
inline char *slotAddress(ListBlock *block, int64_t position) noexcept
{
    return itemsOf(block) + (position - 1) * static_cast<int64_t>(block->itemSize);
}

// Block bytes for a number of item slots.
inline size_t blockBytes(uint32_t itemSize, uint64_t slots) noexcept
{
    return static_cast<size_t>(slots * itemSize + LIST_BLOCK_OVERHEAD);
}

using Where = std::source_location;

// Reports a failed check as an assertion of `function` with `expressionText`,
// at the caller's line.
void assertFailed(const char *expressionText, const char *function, Where where = Where::current()) noexcept;

// True when the list is not NULL and its sanity word is intact. Otherwise the
// fault is reported (the overwritten word also as a TEMP line) and the result
// is false. `sanityText` names the checked variable in the assertion text.
bool checkSanity(ListType list, const char *function, const char *sanityText = "CheckSanity(theList)",
                 Where where = Where::current()) noexcept;

// The status an operation returns when checkSanity failed: 1 for NULL, else 45.
inline int32_t failureStatus(ListType list) noexcept
{
    return list == nullptr ? kListErrArgument : kListErrCorrupt;
}

// Maps -1 to 1 and kEndOfList to the last item; other positions are kept.
inline int32_t readPosition(ListBlock *block, int32_t position) noexcept
{
    if (position == kFrontOfList) return 1;
    if (position == kEndOfList) return block->numItems;
    return position;
}

// As checkSanity, but the byte-swapped sanity word is accepted too: only the
// discard operations use it.
bool checkEitherByteOrderSanity(ListType list, const char *function, const char *sanityText,
                                Where where = Where::current()) noexcept;

// True when a mapped read position addresses an item; else reports
// "itemPosition >= kEndOfList && itemPosition <= (*theList)->numItems".
bool checkItemPosition(ListBlock *block, int32_t position, const char *function,
                       Where where = Where::current()) noexcept;

// True when the list has items; else reports "(*theList)->numItems > 0".
bool checkNotEmpty(ListBlock *block, const char *function, Where where = Where::current()) noexcept;

// Writes "MgErr = %d" at the WARNING level unless the logger is configuring
// itself (growing a list can happen on the logger's own path).
void logMgErr(int32_t error, const char *function, Where where = Where::current()) noexcept;

// Frees the non-NULL blocks that items [first, first + count) of a pointer
// list point to, through the list's DisposePtr.
void disposeItemBlocks(ListType list, int32_t first, int32_t count) noexcept;

// The callbacks of the list's record. A missing record or slot is reported
// as "(*list)->memFuncs" and the call yields its failure value.
void *Call_ListNewPtrFunc(ListType list, size_t byteSize) noexcept;
void Call_ListDisposePtrFunc(ListType list, void *block) noexcept;
void Call_ListDisposeHandFunc(ListType list, const CollectionMemAllocFunctions *record) noexcept;
int32_t Call_ListSetHSzFunc(ListType list, size_t byteSize) noexcept;
void Call_ListHLockFunc(ListType list) noexcept;
void Call_ListHUnlockFunc(ListType list) noexcept;

// The most item slots a list can have: positions and counts are 32-bit signed.
inline constexpr uint32_t kLargestCapacity = INT32_MAX;

// Resizes the block to hold `slots` items. The capacity field is left alone:
// callers set it when the result is 0.
int32_t resizeBlock(ListType list, uint64_t slots) noexcept;

// The growth the allocation policy asks for at the current capacity:
// percent (signed high half) x capacity / 100 + minimum (low half), with
// truncating division, never taking the capacity past kLargestCapacity.
int32_t policyGrowth(const ListBlock *block) noexcept;

// Grows the capacity by `add` items (0: by the policy). Returns 0 or the
// SetHSz error code, logged as "MgErr = %d"; the list is unchanged on failure.
int32_t ExpandListSpace(ListType list, int32_t add) noexcept;

// Binary search of items [0, count) of a sorted block: the 0-based index of
// an equal item, or the one's complement of the index to insert at.
int32_t binarySearch(const char *items, int32_t count, uint32_t itemSize, const void *key,
                     ListCompareFunction compare) noexcept;

}  // namespace tollan::support::list
