// The checks of a relational comparison and of a subtraction of two
// pointers: both must be set, valid, not null, and point into the same live
// block. The two differ in their messages and in one rule: a subtraction
// within a block whose bounds are not checked is reported as one between
// different objects, since its result cannot be trusted as an element count,
// while ordering two pointers into such a block is harmless.
#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/pointer_info.h"
#include "rtcheck/ptr_checks.h"

namespace tollan::rtcheck {
namespace {

struct PairMessages {
    int32_t uninitialized;
    int32_t invalid;
    int32_t null;
    int32_t nonArray;
    int32_t differentObjects;
    int32_t freed;
    bool uncheckedBlockIsDifferent;
};

constexpr PairMessages kComparison{137, 138, 139, 140, 141, 142, false};
constexpr PairMessages kSubtraction{143, 144, 145, 146, 147, 148, true};

bool either(int entry1, int entry2, int entry) noexcept
{
    return entry1 == entry || entry2 == entry;
}

// The message the pair earns, 0 for none.
int32_t pairMessage(const PairMessages &messages, PtrInfo *info1, const BlkInfo *blk1, PtrInfo *info2,
                    const BlkInfo *blk2) noexcept
{
    const int entry1 = classifyInfo(info1).entry;
    const int entry2 = classifyInfo(info2).entry;
    if (either(entry1, entry2, kUncheckedEntry)) return 0;
    if (either(entry1, entry2, kUninitializedEntry)) return messages.uninitialized;
    if (either(entry1, entry2, kInvalidEntry)) return messages.invalid;
    if (either(entry1, entry2, kNullEntry)) return messages.null;
    if (!isRealBlock(blk1) || !isRealBlock(blk2)) return messages.nonArray;
    if (blk1 != blk2) return messages.differentObjects;
    if (messages.uncheckedBlockIsDifferent && (blk1->size & ZOR_BLK_UNCHECKED) != 0)
        return messages.differentObjects;
    return blockSize(*blk1) != 0 ? 0 : messages.freed;
}

void checkPair(const PairMessages &messages, PtrInfo *info1, const BlkInfo *blk1, PtrInfo *info2,
               const BlkInfo *blk2, int32_t line, int32_t col) noexcept
{
    if (const int32_t msgnum = pairMessage(messages, info1, blk1, info2, blk2))
        ReportUPError(kCheckSeverity, msgnum, line, col);
}

}  // namespace
}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

extern "C" {

void _PtrChkCompare(PtrInfo *info1, const BlkInfo *blk1, PtrInfo *info2, const BlkInfo *blk2, int32_t line,
                    int32_t col) noexcept
{
    checkPair(kComparison, info1, blk1, info2, blk2, line, col);
}

void _PtrChkSubtract(PtrInfo *info1, const BlkInfo *blk1, PtrInfo *info2, const BlkInfo *blk2, int32_t line,
                     int32_t col) noexcept
{
    checkPair(kSubtraction, info1, blk1, info2, blk2, line, col);
}

}  // extern "C"
