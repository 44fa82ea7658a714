#include "rtcheck/libchk_argument.h"

#include <cstring>
#include <cwchar>

#include "rtcheck/pointer_info.h"

namespace tollan::rtcheck {
namespace {

// How far a pointer reaches before any use is asked of it. code != 0: the
// pointer is bad in itself. A pointer one past the end of its object is
// valid with nothing to reach.
struct Reach {
    int32_t code;
    uint64_t available;
    bool scalar;
};

constexpr Reach kUnbounded{kArgumentValid, kNoLimit, false};

Reach reachOfEntry(int index) noexcept
{
    if (isScalarEntry(index))
        return {kArgumentValid, static_cast<uint64_t>(highestDisplacement(index)), true};
    switch (index) {
        case kUninitializedEntry:
            return {kUninitializedArgument, 0, false};
        case kNullEntry:
            // The caller knows the pointer to be null whatever its bits say.
            return {kNullArgument, 0, false};
        case kEnforcedUncheckedEntry:
        case kUncheckedEntry:
        case kFirstReplacedEntry:
        case kLastReplacedEntry:
            // Only the block could tell the bounds, and these entries have none.
            return kUnbounded;
        default:
            // A function, a failed check, or an entry with no meaning.
            return {kInvalidArgument, 0, false};
    }
}

Reach reachOf(const ParameterSlot &slot, const void *ptr) noexcept
{
    if (ptr == nullptr) return {kNullArgument, 0, false};
    if (isImplausibleRecord(slot.info)) return {kInvalidArgument, 0, false};
    const int index = predefinedIndex(slot.info);
    if (index >= 0) return reachOfEntry(index);
    const BlkInfo *blk = slot.blk;
    if (blk == nullptr) return kUnbounded;
    if (isImplausibleRecord(blk)) return {kInvalidArgument, 0, false};
    if (blk->size == 0 || blk == staticFreeBlock()) return {kFreedArgument, 0, false};
    if ((blk->size & ZOR_BLK_UNCHECKED) != 0) return kUnbounded;
    const auto address = reinterpret_cast<uint64_t>(ptr);
    const int64_t distance = outOfBoundsDistance(address, *blk);
    if (distance < 0) return {kBeforeStartArgument, 0, false};
    if (distance > 1) return {kPastEndArgument, 0, false};
    if (distance == 1) return {kArgumentValid, 0, false};
    return {kArgumentValid, blk->base + blockSize(*blk) - address, false};
}

}  // namespace

uint64_t reachableBytes(const ParameterSlot *slot, const void *ptr) noexcept
{
    if (slot == nullptr) return kNoLimit;
    const Reach reach = reachOf(*slot, ptr);
    return reach.code == kArgumentValid ? reach.available : 0;
}

int32_t classifyArgument(const ParameterSlot *slot, const void *ptr, ArgumentUse use, uint64_t bytes) noexcept
{
    if (slot == nullptr) return kArgumentValid;
    const Reach reach = reachOf(*slot, ptr);
    if (reach.code != kArgumentValid || use == ArgumentUse::pointer) return reach.code;
    if (use == ArgumentUse::bytes) {
        if (bytes <= reach.available) return kArgumentValid;
        if (reach.available == 0) return kPastEndArgument;
        return reach.scalar ? kScalarArgument : kArgumentTooSmall;
    }
    if (reach.available == kNoLimit) return kArgumentValid;
    if (reach.available == 0) return kPastEndArgument;
    const bool terminated = use == ArgumentUse::string
                                ? std::memchr(ptr, 0, reach.available) != nullptr
                                : std::wmemchr(static_cast<const wchar_t *>(ptr), 0,
                                               reach.available / sizeof(wchar_t)) != nullptr;
    return terminated ? kArgumentValid : kUnterminatedArgument;
}

}  // namespace tollan::rtcheck
