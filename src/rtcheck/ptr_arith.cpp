// The check of pointer arithmetic and array indexing, and the information of
// the pointer it yields: the same block, with the shadow moved in step with
// the data.
#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/pointer_info.h"
#include "rtcheck/ptr_checks.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kInvalidArith = 109;
constexpr int32_t kNullArith = 110;
constexpr int32_t kUninitializedArith = 111;
constexpr int32_t kFreedArith = 113;
constexpr int32_t kPastEndArith = 114;
constexpr int32_t kBeforeStartArith = 115;
constexpr int32_t kFunctionArith = 116;
constexpr int32_t kIndexTooLarge = 117;
constexpr int32_t kNegativeIndex = 118;
constexpr int32_t kShortObject = 134;

struct Arithmetic {
    const Tynode *element;
    uint64_t elementSize;
    uintptr_t value;
    int64_t delta;
    int32_t line;
    int32_t col;
};

void report(const Arithmetic &op, int32_t msgnum, uint64_t first, uint64_t second) noexcept
{
    ReportUPError(kCheckSeverity, msgnum, op.line, op.col, static_cast<size_t>(first),
                  static_cast<size_t>(second));
}

// Magnitudes as unsigned values: the most negative delta has no positive twin.
uint64_t magnitude(int64_t distance) noexcept
{
    return distance < 0 ? 0 - static_cast<uint64_t>(distance) : static_cast<uint64_t>(distance);
}

// The result's information: a table entry stays; a record of the program's
// own moves by as many element shadows as the delta holds elements.
PtrInfo *stepThroughShadow(const Arithmetic &op, const ResolvedInfo &info) noexcept
{
    if (info.entry >= 0) return info.record;
    const uint64_t shadow = elementShadowSize(op.element);
    if (shadow == 0) return info.record;
    const int64_t elements = op.delta / static_cast<int64_t>(op.elementSize);
    return recordAfter<PtrInfo>(info.record, static_cast<uint64_t>(elements) * shadow);
}

// A checked block: freed (reported; false, and the result keeps the
// information), out of bounds (reported; the result moves on all the same,
// so that a pointer brought back in bounds works again), or inside.
bool checkAgainstBlock(const Arithmetic &op, const BlkInfo &blk) noexcept
{
    if (blk.size == 0) {
        ReportUPError(kCheckSeverity, kFreedArith, op.line, op.col);
        return false;
    }
    const int64_t distance = outOfBoundsDistance(op.value + static_cast<uint64_t>(op.delta), blk);
    if (distance >= 2) {
        const uint64_t past = static_cast<uint64_t>(distance);
        report(op, kPastEndArith, past, (past - 1) / op.elementSize + 1);
    } else if (distance < 0) {
        const uint64_t before = magnitude(distance);
        report(op, kBeforeStartArith, before, before / op.elementSize);
    }
    return true;
}

// A table entry moved by delta bytes: a scalar entry moves to the entry of
// the new offset while it stays within its object (one past the end
// included).
PtrInfo *moveEntry(const Arithmetic &op, int entry) noexcept
{
    if (!isScalarEntry(entry)) {
        if (entry != kFunctionEntry) return &predefinedTable[entry];
        ReportUPError(kCheckSeverity, kFunctionArith, op.line, op.col);
        return invalidInfo();
    }
    const int highest = highestDisplacement(entry);
    const int lowest = lowestDisplacement(entry);
    if (op.delta > 0 && op.delta > highest) {
        const uint64_t excess = static_cast<uint64_t>(op.delta) - static_cast<uint64_t>(highest) + 1;
        report(op, kPastEndArith, excess, (excess - 1) / op.elementSize + 1);
        return invalidInfo();
    }
    if (op.delta < 0 && op.delta < lowest) {
        const uint64_t excess = static_cast<uint64_t>(lowest) - static_cast<uint64_t>(op.delta);
        report(op, kBeforeStartArith, excess, (excess - 1) / op.elementSize + 1);
        return invalidInfo();
    }
    return &predefinedTable[entry + op.delta];
}

// Indexing a declared array of `arraySize` bytes: the index may reach one
// past the end. An array of at most one element (a trailing [1] or []
// member) stands for whatever its block holds.
void checkIndex(const Arithmetic &op, uint64_t arraySize, const BlkInfo *blk) noexcept
{
    const uint64_t e = op.elementSize;
    if (op.delta < 0) {
        ReportUPError(kCheckSeverity, kNegativeIndex, op.line, op.col,
                      static_cast<intptr_t>(op.delta / static_cast<int64_t>(e)));
        return;
    }
    const auto delta = static_cast<uint64_t>(op.delta);
    if (delta <= arraySize) return;
    if (arraySize > e) {
        report(op, kIndexTooLarge, delta / e, arraySize / e - 1);
        return;
    }
    const uint64_t available = isRealBlock(blk) ? blockSize(*blk) : 0;
    if (delta < available) return;
    if (available == 0 && arraySize != 0)
        report(op, kIndexTooLarge, delta / e, arraySize / e - 1);
    else if (available == 0)
        report(op, kShortObject, (delta / e + 1) * e, 0);
    else
        report(op, kIndexTooLarge, delta / e, available / e - 1);
}

// Every case, the rare ones included; kept out of line so that the passing
// path below needs no stack frame.
[[gnu::noinline]] PtrInfo *checkArithmetic(const Tynode *type, const void *value, int64_t delta,
                                           PtrInfo *info, const BlkInfo *blk, int32_t line,
                                           int32_t col) noexcept
{
    const ResolvedInfo resolved = classifyInfo(info);
    switch (resolved.entry) {
        case kUninitializedEntry:
            ReportUPError(kCheckSeverity, kUninitializedArith, line, col);
            return resolved.record;
        case kInvalidEntry:
            ReportUPError(kCheckSeverity, kInvalidArith, line, col);
            return resolved.record;
        case kUncheckedEntry:
            return resolved.record;
        default:
            break;
    }
    if (resolved.entry == kNullEntry || value == nullptr) {
        ReportUPError(kCheckSeverity, kNullArith, line, col);
        return invalidInfo();
    }
    const Tynode *pointer = plainType(type);
    const bool indexing = pointer != nullptr && pointer->op == LCC_ARRAY;
    const Tynode *element = elementType(pointer);
    const Arithmetic op{element, stepSize(element), reinterpret_cast<uintptr_t>(value), delta, line, col};
    if (!indexing && checksBounds(blk, resolved.entry)) {
        if (blk != staticFreeBlock() && !checkAgainstBlock(op, *blk)) return resolved.record;
        return stepThroughShadow(op, resolved);
    }
    if (delta == 0) return resolved.record;
    if (resolved.entry >= 0) return moveEntry(op, resolved.entry);
    if (indexing) checkIndex(op, pointer->size, blk);
    return stepThroughShadow(op, resolved);
}

}  // namespace
}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

extern "C" PtrInfo *_PtrChkArith(const Tynode *type, const void *value, int64_t delta, PtrInfo *info,
                                 const BlkInfo *blk, int32_t line, int32_t col) noexcept
{
    // A step through an array of pointer-free elements that stays within
    // the block, one past the end included: the information stays.
    if (type != nullptr && type->op == LCC_POINTER && value != nullptr && isOwnRecord(info) &&
        isRealBlock(blk) &&
        fitsLiveBlock(*blk, reinterpret_cast<uintptr_t>(value) + static_cast<uint64_t>(delta) - blk->base,
                      0)) {
        const Tynode *element = type->type;
        if (element != nullptr && elementShadowSize(element) == 0) return info;
    }
    return checkArithmetic(type, value, delta, info, blk, line, col);
}
