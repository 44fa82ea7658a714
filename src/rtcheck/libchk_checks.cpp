#include "rtcheck/libchk_checks.h"

#include <tollan/rtcheck.h>

#include "rtcheck/break_settings.h"
#include "rtcheck/libchk_argument.h"
#include "rtcheck/pointer_info.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kFirstArgumentMessage = 164;

void reportArgument(int32_t code, int32_t argpos) noexcept
{
    _UPLibReportError(code - kFirstArgumentMessage, argpos);
}

}  // namespace

uint64_t neededBytes(uint64_t eltsize, uint64_t count) noexcept
{
    uint64_t bytes = 0;
    return __builtin_mul_overflow(eltsize, count, &bytes) ? kOverflowedByteCount : bytes;
}

bool argumentChecksReport() noexcept
{
    return checkingLevel() && threadReportState().breakOnProtectionErrors != 0;
}

bool argumentsHandedTo(const void *frame) noexcept
{
    if (!argumentChecksReport()) return false;
    const ParameterArea *area = parameterArea();
    return area != nullptr && area->callee != nullptr &&
           followJumpStubs(area->callee) == followJumpStubs(frame);
}

bool checkString(const char *str, bool nullok, int32_t argpos, const void *frame) noexcept
{
    if (!argumentChecksReport()) return true;
    const int32_t code = classifyArgument(callerSlot(argpos, frame), str, ArgumentUse::string, 0);
    if (code == kArgumentValid || (code == kNullArgument && nullok)) return true;
    reportArgument(code, argpos);
    return false;
}

bool checkSize(const void *ptr, uint64_t eltsize, uint64_t count, bool nullok, int32_t argpos,
               const void *frame) noexcept
{
    if (eltsize == 0 || !argumentChecksReport()) return true;
    const ParameterSlot *slot = callerSlot(argpos, frame);
    if (count == 0) {
        const int32_t code = classifyArgument(slot, ptr, ArgumentUse::pointer, 0);
        if (code == kArgumentValid || (code == kNullArgument && nullok)) return true;
        reportArgument(code, argpos);
        return false;
    }
    const uint64_t bytes = neededBytes(eltsize, count);
    const int32_t code = classifyArgument(slot, ptr, ArgumentUse::bytes, bytes);
    if (code == kArgumentValid || (code == kNullArgument && nullok)) return true;
    if (code == kArgumentTooSmall)
        _UPLibReportError(code - kFirstArgumentMessage, argpos, reachableBytes(slot, ptr), bytes, count);
    else
        reportArgument(code, argpos);
    return false;
}

void returnArgument(int32_t argpos, const void *frame, const void *value) noexcept
{
    ParameterArea *area = parameterArea();
    if (area == nullptr) return;
    const ParameterSlot *slot = callerSlot(argpos, frame);
    PtrInfo handed{};
    if (slot != nullptr && !isImplausibleRecord(slot->info) && !isImplausibleRecord(slot->blk)) {
        if (predefinedIndex(slot->info) >= 0) {
            // An entry stands for itself; it has no block.
            handed.info = reinterpret_cast<uint64_t>(slot->info);
        } else {
            handed.info = slot->info->info;
            handed.blk = slot->blk != nullptr ? reinterpret_cast<uint64_t>(slot->blk) : slot->info->blk;
        }
        handed.value = value != nullptr ? reinterpret_cast<uint64_t>(value) : slot->info->value;
    }
    area->returnValue = handed;
}

void clearArguments() noexcept
{
    ParameterArea *area = parameterArea();
    if (area == nullptr) return;
    area->slotCount = 0;
    area->coordinateCount = 0;
    area->previousCallee = area->callee;
    area->callee = nullptr;
}

}  // namespace tollan::rtcheck
