// Pointer information across a call. Before the call the caller records the
// callee and fills one slot per argument in the thread's hand-over area; the
// callee takes a slot only when the call recorded goes to it, so a call from
// code without checks (a library's callback, say) never picks up another
// call's slots. The callee hands its result's information back in the same
// area, where the caller collects it after the call.
#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/checking_environment.h"
#include "rtcheck/pointer_info.h"
#include "rtcheck/ptr_checks.h"
#include "rtcheck/ptr_shadow.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kMissingReturn = 105;
constexpr int32_t kParameterMismatch = 135;

bool validIndex(int32_t index) noexcept
{
    return index >= 0 && index < kParameterSlots;
}

// The caller's slot for parameter `index` of the function at `self`, when the
// call recorded goes there and the argument's type fits the parameter's.
const ParameterSlot *matchingSlot(const ParameterArea *area, int32_t index, const void *self,
                                  const Tynode *type) noexcept
{
    if (!validIndex(index)) return nullptr;
    const ParameterSlot *slot = callerSlot(area, index + 1, self);
    if (slot == nullptr) return nullptr;
    if (slot->type != nullptr && type != nullptr && AreCompatibleTypes(slot->type, type, 1) == 0)
        return nullptr;
    return slot;
}

// The result's record once the caller has it: a callee that handed nothing
// back, or whose record describes another value (a nested call's, left by
// code without checks), leaves the result unchecked; a checked function that
// ended without a return value is reported once, and its result is
// uninitialised.
PtrInfo &settledResult(ParameterArea &area, const void *value, int32_t line, int32_t col) noexcept
{
    PtrInfo &result = area.returnValue;
    const int entry = infoOf(result).entry;
    if (entry == kMissingReturnEntry) {
        ReportUPError(kAssignSeverity, kMissingReturn, line, col);
        result = {word(&predefinedTable[kUninitializedEntry]), 0, word(value)};
    } else if (entry == kNothingReturnedEntry ||
               (entry < 0 && result.value != 0 && result.value != word(value))) {
        result = {word(uncheckedInfo()), 0, word(value)};
    } else if (result.value == 0) {
        // A checked library wrapper hands an argument's information on before
        // its call has a result (_UPLibReturnArg): it holds for the value returned.
        result.value = word(value);
    }
    return result;
}

}  // namespace
}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

extern "C" {

void _PtrPreCall(void *env, const void *callee) noexcept
{
    ParameterArea *area = parameterArea(env);
    if (area == nullptr) return;
    area->callee = callee;
    area->slotCount = 0;
    area->coordinateCount = 0;
    area->returnValue = {word(&predefinedTable[kNothingReturnedEntry]), 0, 0};
}

void _PtrPostCall(void *env) noexcept
{
    ParameterArea *area = parameterArea(env);
    if (area == nullptr) return;
    // A library twin may have forgotten the call already and kept its callee.
    if (area->callee != nullptr) area->previousCallee = area->callee;
    area->callee = nullptr;
    area->slotCount = 0;
    area->coordinateCount = 0;
}

void _PassParamInfo(void *env, int32_t index, const Tynode *type, PtrInfo *info, const BlkInfo *blk) noexcept
{
    ParameterArea *area = parameterArea(env);
    if (area == nullptr || !validIndex(index)) return;
    for (int32_t skipped = area->slotCount; skipped < index; ++skipped) area->slots[skipped] = {};
    const Tynode *plain = plainType(type);
    const bool pointer = plain == nullptr || plain->op == LCC_POINTER;
    area->slots[index] = {classifyInfo(info).record, pointer ? const_cast<BlkInfo *>(blk) : nullptr, type};
    if (index >= area->slotCount) area->slotCount = index + 1;
}

void _PassArgCoord(void *env, int32_t index, int32_t line, int32_t col) noexcept
{
    ParameterArea *area = parameterArea(env);
    if (area == nullptr || !validIndex(index)) return;
    for (int32_t skipped = area->coordinateCount; skipped < index; ++skipped) area->coordinates[skipped] = {};
    area->coordinates[index] = {line, col};
    if (index >= area->coordinateCount) area->coordinateCount = index + 1;
}

PtrInfo *_GetParamInfo(void *env, int32_t index, const void *self, const Tynode *type, int32_t line,
                       int32_t col) noexcept
{
    const ParameterArea *area = parameterArea(env);
    if (const ParameterSlot *slot = matchingSlot(area, index, self, type)) return slot->info;
    // A filled slot that did not match was an argument of another type.
    if (validIndex(index) && callerSlot(area, index + 1, self) != nullptr) {
        if (index < area->coordinateCount && area->coordinates[index].line != 0) {
            line = area->coordinates[index].line;
            col = area->coordinates[index].column;
        }
        ReportUPError(kCheckSeverity, kParameterMismatch, line, col);
    }
    return uncheckedInfo();
}

BlkInfo *_ReceiveBlkInfo(void *env, int32_t index, const void *self, const Tynode *type) noexcept
{
    const ParameterSlot *slot = matchingSlot(parameterArea(env), index, self, type);
    return slot != nullptr ? slot->blk : nullptr;
}

void _ReturnPtrInfo(void *env, PtrInfo *info, const BlkInfo *blk, const void *value) noexcept
{
    if (ParameterArea *area = parameterArea(env))
        area->returnValue = {word(classifyInfo(info).record), word(blk), word(value)};
}

void _PtrSetRetValLoc(void *env, const PtrInfo *loc) noexcept
{
    ParameterArea *area = parameterArea(env);
    if (area == nullptr) return;
    const ResolvedInfo from = classifyInfo(const_cast<PtrInfo *>(loc));
    area->returnValue = from.entry >= 0 ? PtrInfo{word(from.record), 0, 0} : *loc;
}

PtrInfo *_PtrGetRetValLoc(void *env, const void *value, int32_t line, int32_t col) noexcept
{
    ParameterArea *area = parameterArea(env);
    if (area == nullptr) return uncheckedInfo();
    return &settledResult(*area, value, line, col);
}

PtrInfo *_ReceivePtrInfo(void *env, PtrInfo *dest, const void *value, int32_t line, int32_t col) noexcept
{
    ParameterArea *area = parameterArea(env);
    if (area == nullptr) return uncheckedInfo();
    const PtrInfo &result = settledResult(*area, value, line, col);
    // The receiving pointer's record describes the value it holds.
    if (classifyInfo(dest).entry < 0) *dest = {result.info, result.blk, word(value)};
    return infoOf(result).record;
}

}  // extern "C"
