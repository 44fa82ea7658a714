// The check of a dereference: the pointer must be set, valid, not null, and
// leave room in its block or scalar for the whole object read; functions and
// data are not read as one another.
#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/pointer_info.h"
#include "rtcheck/ptr_checks.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kInvalidDeref = 124;
constexpr int32_t kNullDeref = 125;
constexpr int32_t kUninitializedDeref = 126;
constexpr int32_t kFreedDeref = 128;
constexpr int32_t kPastEndDeref = 129;
constexpr int32_t kBeforeStartDeref = 130;
constexpr int32_t kFunctionAsData = 132;
constexpr int32_t kDataAsFunction = 133;
constexpr int32_t kShortObject = 134;

struct Dereference {
    uint64_t objectSize;  // 0: unknown, nothing to measure
    int32_t line;
    int32_t col;
};

PtrInfo *report(const Dereference &op, int32_t msgnum) noexcept
{
    ReportUPError(kDerefSeverity, msgnum, op.line, op.col);
    return invalidInfo();
}

PtrInfo *report(const Dereference &op, int32_t msgnum, uint64_t first, uint64_t second) noexcept
{
    ReportUPError(kDerefSeverity, msgnum, op.line, op.col, static_cast<size_t>(first),
                  static_cast<size_t>(second));
    return invalidInfo();
}

// The bounds of a checked block; null when the object lies within them.
PtrInfo *checkBlock(const Dereference &op, uintptr_t value, const BlkInfo &blk) noexcept
{
    if (blk.size == 0) return report(op, kFreedDeref);
    const int64_t distance = outOfBoundsDistance(value, blk);
    const uint64_t divisor = op.objectSize == 0 ? 1 : op.objectSize;
    if (distance > 0) {
        const auto past = static_cast<uint64_t>(distance);
        return report(op, kPastEndDeref, past, (past - 1) / divisor + 1);
    }
    if (distance < 0) {
        const uint64_t before = 0 - static_cast<uint64_t>(distance);
        return report(op, kBeforeStartDeref, before, before / divisor);
    }
    const uint64_t left = blk.base + blockSize(blk) - value;
    if (op.objectSize > left) return report(op, kShortObject, op.objectSize, left);
    return nullptr;
}

// A scalar entry: the bytes from its offset to the end of its object.
PtrInfo *checkScalar(const Dereference &op, int entry) noexcept
{
    const auto left = static_cast<uint64_t>(highestDisplacement(entry));
    if (op.objectSize <= left) return nullptr;
    if (left == 0) return report(op, kPastEndDeref, 1, 1);
    return report(op, kShortObject, op.objectSize, left);
}

// Every case, the rare ones included; kept out of line so that the passing
// path below needs no stack frame.
[[gnu::noinline]] PtrInfo *checkDereference(const Tynode *type, const void *value, PtrInfo *info,
                                            const BlkInfo *blk, int32_t line, int32_t col) noexcept
{
    const ResolvedInfo resolved = classifyInfo(info);
    const Tynode *object = plainType(type);
    const Dereference op{object != nullptr ? object->size & ~ZOR_BLK_UNCHECKED : 0, line, col};
    if (resolved.entry == kUninitializedEntry) return report(op, kUninitializedDeref);
    if (resolved.entry == kInvalidEntry) return report(op, kInvalidDeref);
    if (resolved.entry == kNullEntry || value == nullptr) return report(op, kNullDeref);
    if (resolved.entry == kUncheckedEntry) return resolved.record;
    if (checksBounds(blk, resolved.entry)) {
        if (blk != staticFreeBlock()) {
            if (PtrInfo *failed = checkBlock(op, reinterpret_cast<uintptr_t>(value), *blk)) return failed;
        }
    } else if (isScalarEntry(resolved.entry)) {
        if (PtrInfo *failed = checkScalar(op, resolved.entry)) return failed;
    }
    const bool asFunction = object != nullptr && object->op == LCC_FUNCTION;
    if (asFunction && resolved.entry != kFunctionEntry) return report(op, kDataAsFunction);
    if (!asFunction && resolved.entry == kFunctionEntry) return report(op, kFunctionAsData);
    return resolved.record;
}

}  // namespace
}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

extern "C" PtrInfo *_PtrChkDeref(const Tynode *type, const void *value, PtrInfo *info, const BlkInfo *blk,
                                 int32_t line, int32_t col) noexcept
{
    // Data read within a live block through a pointer of the program's own.
    if (type != nullptr && !isQualifierLayer(type->op) && type->op != LCC_FUNCTION && value != nullptr &&
        isOwnRecord(info) && isRealBlock(blk)) {
        const uint64_t offset = reinterpret_cast<uintptr_t>(value) - blk->base;
        if (offset < blk->size && fitsLiveBlock(*blk, offset, type->size)) return info;
    }
    return checkDereference(type, value, info, blk, line, col);
}
