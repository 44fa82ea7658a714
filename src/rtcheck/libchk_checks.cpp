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

bool passes(int32_t code, bool nullok) noexcept
{
    return code == kArgumentValid || (code == kNullArgument && nullok);
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

HandOverView handOverFor(const void *frame) noexcept
{
    ParameterArea *area = parameterArea();
    // No recorded callee is the common case of a call from unchecked code:
    // nothing more is looked at.
    if (area == nullptr || area->callee == nullptr) return {area, false};
    // The caller usually records the very entry it calls; a stub in between
    // (an import or a PLT entry) is followed only when it did not.
    return {area, area->callee == frame || followJumpStubs(area->callee) == followJumpStubs(frame)};
}

bool checkString(const HandOverView &view, const char *str, bool nullok, int32_t argpos) noexcept
{
    const int32_t code = classifyArgument(slotOf(view, argpos), str, ArgumentUse::string, 0);
    if (passes(code, nullok)) return true;
    reportArgument(code, argpos);
    return false;
}

bool checkWideString(const HandOverView &view, const wchar_t *str, bool nullok, int32_t argpos) noexcept
{
    const int32_t code = classifyArgument(slotOf(view, argpos), str, ArgumentUse::wideString, 0);
    if (passes(code, nullok)) return true;
    reportArgument(code, argpos);
    return false;
}

bool checkSize(const HandOverView &view, const void *ptr, uint64_t eltsize, uint64_t count, bool nullok,
               int32_t argpos) noexcept
{
    if (eltsize == 0) return true;
    const ParameterSlot *slot = slotOf(view, argpos);
    if (count == 0) {
        const int32_t code = classifyArgument(slot, ptr, ArgumentUse::pointer, 0);
        if (passes(code, nullok)) return true;
        reportArgument(code, argpos);
        return false;
    }
    const uint64_t bytes = neededBytes(eltsize, count);
    const int32_t code = classifyArgument(slot, ptr, ArgumentUse::bytes, bytes);
    if (passes(code, nullok)) return true;
    if (code == kArgumentTooSmall)
        _UPLibReportError(code - kFirstArgumentMessage, argpos, reachableBytes(slot, ptr), bytes, count);
    else
        reportArgument(code, argpos);
    return false;
}

void returnArgument(const HandOverView &view, int32_t argpos, const void *value) noexcept
{
    if (view.area == nullptr) return;
    const ParameterSlot *slot = slotOf(view, argpos);
    // The slot holds what the caller passed: the information word (the
    // pointed-at shadow, or an entry, which has no block) and the block.
    PtrInfo handed{};
    if (slot != nullptr && !isImplausibleRecord(slot->info) && !isImplausibleRecord(slot->blk)) {
        const bool entry = predefinedIndex(slot->info) >= 0;
        handed = {reinterpret_cast<uint64_t>(slot->info), entry ? 0 : reinterpret_cast<uint64_t>(slot->blk),
                  reinterpret_cast<uint64_t>(value)};
    }
    view.area->returnValue = handed;
}

void clearArguments(ParameterArea *area) noexcept
{
    if (area == nullptr) return;
    area->slotCount = 0;
    area->coordinateCount = 0;
    area->previousCallee = area->callee;
    area->callee = nullptr;
}

}  // namespace tollan::rtcheck
