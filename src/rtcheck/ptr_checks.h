// What the pointer checks share: the sizes they take from type nodes on
// their passing path, and the severities of their reports.
#pragma once

#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/pointer_info.h"
#include "rtcheck/type_walk.h"

namespace tollan::rtcheck {

// The source module that the pointer checks' assertions name.
inline constexpr const char *kPointerModule = "c/up_run";

// Severities: a bad dereference harms the program at once, a bad comparison,
// arithmetic, cast or hand-over may not yet, a bad stored pointer only
// later.
inline constexpr int32_t kDerefSeverity = ZOR_RTE_FATAL;
inline constexpr int32_t kCheckSeverity = ZOR_RTE_NON_FATAL;
inline constexpr int32_t kAssignSeverity = ZOR_RTE_WARNING;

// The bytes of a block header in a shadow (a struct's or an array's).
inline constexpr uint64_t kShadowHeaderSize = sizeof(BlkInfo);

// ty without its qualifier layers; the common unqualified node costs one
// comparison. Null stays null, and so does a chain that loops.
inline const Tynode *plainType(const Tynode *ty) noexcept
{
    if (ty == nullptr || !isQualifierLayer(ty->op)) return ty;
    return unqualify(ty, kPointerModule, "plainType");
}

// What a pointer or array type points at or holds; null for other types.
inline const Tynode *elementType(const Tynode *ty) noexcept
{
    const Tynode *outer = plainType(ty);
    if (outer == nullptr || (outer->op != LCC_POINTER && outer->op != LCC_ARRAY)) return nullptr;
    return outer->type;
}

// The element size that arithmetic steps by: 1 for an element without a
// size (void, an incomplete type, no type at all), so that counts of
// elements stay defined.
inline uint64_t stepSize(const Tynode *element) noexcept
{
    if (element == nullptr) return 1;
    uint64_t size = element->size;
    if (size == 0 && isQualifierLayer(element->op)) {
        const Tynode *plain = plainType(element);
        size = plain != nullptr ? plain->size : 0;
    }
    return size == 0 || (size & ZOR_BLK_UNCHECKED) != 0 ? 1 : size;
}

// The bytes of shadow one element occupies inside the shadow of its array:
// its own shadow, less the header that nested arrays share with the outer
// one. Types that hold no pointer need none, found without a walk.
inline uint64_t elementShadowSize(const Tynode *element) noexcept
{
    if (element == nullptr) return 0;
    const int32_t op = element->op;
    if (op != LCC_POINTER && op != LCC_STRUCT && op != LCC_ARRAY && !isQualifierLayer(op)) return 0;
    const uint64_t size = PtrSizeOf(element);
    const Tynode *plain = plainType(element);
    if (plain != nullptr && plain->op == LCC_ARRAY && size >= kShadowHeaderSize)
        return size - kShadowHeaderSize;
    return size;
}

// A flexible array member: the last member, an array without a size. Its
// shadow is a header only, and a struct needs no room for it.
inline bool isFlexibleMember(const TyField *field) noexcept
{
    const Tynode *member = plainType(field->type);
    return field->link == nullptr && member != nullptr && member->op == LCC_ARRAY && member->size == 0;
}

// Whether the bounds of blk are checked for a pointer whose information is
// entry `entry` (-1: a record of the program's own): a real block without
// the unchecked mark, or any real block for entry 44.
inline bool checksBounds(const BlkInfo *blk, int entry) noexcept
{
    return isRealBlock(blk) && ((blk->size & ZOR_BLK_UNCHECKED) == 0 || entry == kEnforcedUncheckedEntry);
}

// Records keep addresses as 64-bit words, as compiled code writes them.
inline uint64_t word(const void *address) noexcept
{
    return reinterpret_cast<uintptr_t>(address);
}

template <typename T>
T *fromWord(uint64_t address) noexcept
{
    return reinterpret_cast<T *>(static_cast<uintptr_t>(address));  // NOLINT(performance-no-int-to-ptr)
}

// The record or entry `offset` bytes from base; offsets wrap as addresses do.
template <typename T>
T *recordAfter(const void *base, uint64_t offset) noexcept
{
    return fromWord<T>(word(base) + offset);
}

// What the information word of a stored record stands for.
inline ResolvedInfo infoOf(const PtrInfo &record) noexcept
{
    return classifyInfo(fromWord<PtrInfo>(record.info));
}

// The passing path of the busiest checks, decided inline without a call: a
// record of the program's own (not a table entry, not refused) and a live
// block with checked bounds. The bytes from `offset` into the block must not
// pass its end (a dereference also needs offset inside it).
inline bool isOwnRecord(const PtrInfo *info) noexcept
{
    return isRealBlock(reinterpret_cast<const BlkInfo *>(info));
}
inline bool fitsLiveBlock(const BlkInfo &blk, uint64_t offset, uint64_t bytes) noexcept
{
    const uint64_t size = blk.size;
    return size != 0 && (size & ZOR_BLK_UNCHECKED) == 0 && offset <= size && bytes <= size - offset;
}

inline PtrInfo *invalidInfo() noexcept
{
    return &predefinedTable[kInvalidEntry];
}

inline PtrInfo *uncheckedInfo() noexcept
{
    return &predefinedTable[kUncheckedEntry];
}

}  // namespace tollan::rtcheck
