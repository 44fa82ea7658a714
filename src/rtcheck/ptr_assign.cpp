// Storing a pointer: the check of the value stored and the record kept
// beside it; and reading a stored pointer's record back as a value.
#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/pointer_info.h"
#include "rtcheck/ptr_checks.h"
#include "rtcheck/ptr_shadow.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kInvalidAssign = 119;
constexpr int32_t kUninitializedAssign = 120;
constexpr int32_t kPastEndAssign = 121;
constexpr int32_t kBeforeStartAssign = 122;
constexpr int32_t kFreedAssign = 123;

// The information an assignment stores: 49 and 50 become 48.
ResolvedInfo assignedInfo(PtrInfo *info) noexcept
{
    const ResolvedInfo resolved = classifyInfo(info);
    if (resolved.entry >= kFirstReplacedEntry && resolved.entry <= kLastReplacedEntry)
        return {uncheckedInfo(), kUncheckedEntry};
    return resolved;
}

// The message the stored pointer earns, 0 for none.
int32_t assignMessage(const ResolvedInfo &info, const void *value, const BlkInfo *blk,
                      int64_t &distance) noexcept
{
    if (info.entry == kUninitializedEntry) return kUninitializedAssign;
    if (info.entry == kInvalidEntry) return kInvalidAssign;
    if (info.entry == kNullEntry || info.entry == kUncheckedEntry) return 0;
    if (value == nullptr || !checksBounds(blk, info.entry) || blk == staticFreeBlock()) return 0;
    if (blk->size == 0) return kFreedAssign;
    distance = outOfBoundsDistance(word(value), *blk);
    if (distance >= 2) return kPastEndAssign;
    return distance < 0 ? kBeforeStartAssign : 0;
}

// A stored record read back for the value the program holds: code without
// checks may have changed the pointer behind the record's back, and then
// nothing is known of it. An uninitialised pointer's bits are whatever they
// are, so its record holds for any value.
const PtrInfo *currentRecord(const PtrInfo *loc, const void *value) noexcept
{
    if (classifyInfo(const_cast<PtrInfo *>(loc)).entry >= 0) return nullptr;
    if (loc->value == word(value)) return loc;
    const int entry = infoOf(*loc).entry;
    return entry == kUninitializedEntry ? loc : nullptr;
}

}  // namespace
}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

extern "C" {

PtrInfo *_PtrChkAssign(const void *value, PtrInfo *dest, PtrInfo *info, const BlkInfo *blk, int32_t line,
                       int32_t col) noexcept
{
    const ResolvedInfo stored = assignedInfo(info);
    // The record is kept whatever the checks below find.
    if (classifyInfo(dest).entry < 0) *dest = {word(stored.record), word(blk), word(value)};
    int64_t distance = 0;
    const int32_t msgnum = assignMessage(stored, value, blk, distance);
    if (msgnum == kPastEndAssign || msgnum == kBeforeStartAssign) {
        const uint64_t bytes =
            distance < 0 ? 0 - static_cast<uint64_t>(distance) : static_cast<uint64_t>(distance);
        ReportUPError(kAssignSeverity, msgnum, line, col, static_cast<size_t>(bytes));
    } else if (msgnum != 0) {
        ReportUPError(kAssignSeverity, msgnum, line, col);
    }
    return stored.record;
}

void _PtrAssignPtr(PtrInfo *dest, const PtrInfo *src) noexcept
{
    if (classifyInfo(dest).entry >= 0) return;
    const ResolvedInfo from = classifyInfo(const_cast<PtrInfo *>(src));
    if (from.entry >= 0) {
        *dest = {word(assignedInfo(from.record).record), 0, 0};
        return;
    }
    *dest = {word(assignedInfo(fromWord<PtrInfo>(src->info)).record), src->blk, src->value};
}

PtrInfo *_PtrRValue(const PtrInfo *loc, const void *value) noexcept
{
    const PtrInfo *record = currentRecord(loc, value);
    return record != nullptr ? infoOf(*record).record : uncheckedInfo();
}

BlkInfo *_PtrBlkRValue(const PtrInfo *loc, const void *value) noexcept
{
    const PtrInfo *record = currentRecord(loc, value);
    return record != nullptr ? fromWord<BlkInfo>(record->blk) : nullptr;
}

}  // extern "C"
