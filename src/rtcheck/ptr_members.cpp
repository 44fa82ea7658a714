// Walking a struct's shadow to one member: the member's pointer information,
// and the block information of a struct or array member, which a pointer
// into the member is checked against.
#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/pointer_info.h"
#include "rtcheck/ptr_checks.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kNoRoomForMember = 136;

// The bytes into the struct's shadow where member's shadow starts; -1 when
// member is not one of the struct's.
int64_t memberShadowOffset(const Tynode *type, const TyField *member) noexcept
{
    const Tynode *record = plainType(type);
    if (record == nullptr || record->op != LCC_STRUCT || record->sym == nullptr || member == nullptr)
        return -1;
    uint64_t offset = kShadowHeaderSize;
    for (const TyField *field = record->sym->fields; field != nullptr; field = field->link) {
        if (field == member) return static_cast<int64_t>(offset);
        offset += isFlexibleMember(field) ? kShadowHeaderSize : PtrSizeOf(field->type);
    }
    return -1;
}

// Whether the block that value points into ends before member does.
bool memberOutsideBlock(const void *value, const ResolvedInfo &info, const BlkInfo *blk,
                        const TyField *member) noexcept
{
    if (value == nullptr || !checksBounds(blk, info.entry) || blk == staticFreeBlock() || blk->size == 0)
        return false;
    const auto address = reinterpret_cast<uintptr_t>(value);
    if (outOfBoundsDistance(address, *blk) != 0) return false;
    const Tynode *type = plainType(member->type);
    const uint64_t end = member->offset + (type != nullptr ? type->size & ~ZOR_BLK_UNCHECKED : 0);
    return end > blk->base + blockSize(*blk) - address;
}

}  // namespace
}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

extern "C" {

PtrInfo *_PtrStructMemInfoPtr(const Tynode *type, PtrInfo *info, const TyField *member) noexcept
{
    const ResolvedInfo resolved = classifyInfo(info);
    // A scalar entry has no records of members; the other entries hold for
    // every part of what the pointer points at.
    if (resolved.entry >= 0) return isScalarEntry(resolved.entry) ? uncheckedInfo() : resolved.record;
    const int64_t offset = memberShadowOffset(type, member);
    if (offset < 0) return invalidInfo();
    return recordAfter<PtrInfo>(info, static_cast<uint64_t>(offset));
}

BlkInfo *_PtrStructMemSizePtr(const Tynode *type, const void *value, PtrInfo *info, const BlkInfo *blk,
                              const TyField *member, int32_t line, int32_t col) noexcept
{
    const ResolvedInfo resolved = classifyInfo(info);
    const int64_t offset = memberShadowOffset(type, member);
    if (offset < 0) return nullptr;
    if (memberOutsideBlock(value, resolved, blk, member)) {
        ReportUPError(kCheckSeverity, kNoRoomForMember, line, col,
                      member->name != nullptr ? member->name : "");
        return nullptr;
    }
    const Tynode *part = plainType(member->type);
    const bool hasHeader = part != nullptr && (part->op == LCC_STRUCT || part->op == LCC_ARRAY) &&
                           (part->size != 0 || isFlexibleMember(member));
    if (resolved.entry >= 0 || !hasHeader) return nullptr;
    return recordAfter<BlkInfo>(info, static_cast<uint64_t>(offset));
}

}  // extern "C"
