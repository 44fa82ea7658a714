// The information of a pointer after a cast to another pointer type. A cast
// is reported when the pointer is in bounds but what it points at cannot
// hold one object of the new type (a cast one past the end points at
// nothing and is left to the dereference). Pointers that are set, valid,
// not null and otherwise usable keep their information, except that a scalar
// entry cannot describe an object that holds pointers: no records of those
// pointers exist, so the result is unchecked.
#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/pointer_info.h"
#include "rtcheck/ptr_checks.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kNoRoomForCast = 149;

struct Cast {
    const Tynode *pointee;
    uint64_t room;  // the bytes one object of the new type needs
    int32_t line;
    int32_t col;
};

// The bytes at value that the pointer may reach; UINT64_MAX when they are not
// known or not checked.
uint64_t bytesLeft(const void *value, const ResolvedInfo &info, const BlkInfo *blk) noexcept
{
    if (value == nullptr) return UINT64_MAX;
    if (isScalarEntry(info.entry)) {
        const auto left = static_cast<uint64_t>(highestDisplacement(info.entry));
        return left != 0 ? left : UINT64_MAX;
    }
    if (info.entry >= 0 && info.entry != kEnforcedUncheckedEntry) return UINT64_MAX;
    if (!checksBounds(blk, info.entry) || blk == staticFreeBlock() || blk->size == 0) return UINT64_MAX;
    const auto address = reinterpret_cast<uintptr_t>(value);
    if (outOfBoundsDistance(address, *blk) != 0) return UINT64_MAX;
    return blk->base + blockSize(*blk) - address;
}

PtrInfo *castInfo(const Cast &cast, const void *value, PtrInfo *info, const BlkInfo *blk,
                  bool keepsScalarEntries) noexcept
{
    const ResolvedInfo resolved = classifyInfo(info);
    if (cast.room > bytesLeft(value, resolved, blk)) {
        ReportUPError(kCheckSeverity, kNoRoomForCast, cast.line, cast.col, cast.pointee);
        return invalidInfo();
    }
    if (!keepsScalarEntries && isScalarEntry(resolved.entry) && elementShadowSize(cast.pointee) != 0)
        return uncheckedInfo();
    return resolved.record;
}

uint64_t objectSize(const Tynode *type) noexcept
{
    const Tynode *plain = plainType(type);
    return plain != nullptr ? plain->size & ~ZOR_BLK_UNCHECKED : 0;
}

// A struct cast onto a block needs room for its fixed part: a flexible
// array member at its end takes what the block has left.
uint64_t fixedPartSize(const Tynode *record) noexcept
{
    const Tynode *plain = plainType(record);
    if (plain == nullptr || plain->op != LCC_STRUCT || plain->sym == nullptr) return objectSize(record);
    for (const TyField *field = plain->sym->fields; field != nullptr; field = field->link) {
        if (isFlexibleMember(field)) return field->offset;
    }
    return plain->size & ~ZOR_BLK_UNCHECKED;
}

}  // namespace
}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

extern "C" {

PtrInfo *_PtrCast(const Tynode *type, const void *value, PtrInfo *info, const BlkInfo *blk, int32_t line,
                  int32_t col) noexcept
{
    const Tynode *pointee = elementType(type);
    return castInfo({pointee, objectSize(pointee), line, col}, value, info, blk, false);
}

PtrInfo *_PtrCastStructBlk(const Tynode *type, const void *value, PtrInfo *info, const BlkInfo *blk,
                           int32_t line, int32_t col) noexcept
{
    const Tynode *pointee = elementType(type);
    return castInfo({pointee, fixedPartSize(pointee), line, col}, value, info, blk, false);
}

PtrInfo *_PtrCastToScalar(const Tynode *type, const void *value, PtrInfo *info, const BlkInfo *blk,
                          int32_t line, int32_t col) noexcept
{
    const Tynode *pointee = elementType(type);
    return castInfo({pointee, objectSize(pointee), line, col}, value, info, blk, true);
}

}  // extern "C"
