// The exported argument checks: what checked twins, and code generators
// that build checked calls of their own, are made from.
#include <tollan/rtcheck.h>

#include "rtcheck/break_settings.h"
#include "rtcheck/libchk_argument.h"
#include "rtcheck/libchk_checks.h"
#include "rtcheck/pointer_info.h"

using namespace tollan::rtcheck;

int32_t _UPLibChkString(const char *str, int32_t nullok, int32_t argpos, const void *frame) noexcept
{
    if (argumentChecksReport()) checkString(handOverFor(frame), str, nullok != 0, argpos);
    return 1;
}

int32_t _UPLibChkSize(const void *ptr, uint64_t eltsize, uint64_t count, int32_t nullok, int32_t argpos,
                      const void *frame) noexcept
{
    if (argumentChecksReport()) checkSize(handOverFor(frame), ptr, eltsize, count, nullok != 0, argpos);
    return 1;
}

int32_t _UPLibChkRefArg(const void *ptr, const struct Tynode *type, int32_t nullok, int32_t argpos,
                        const void *frame) noexcept
{
    // The type is only read when the check may report. An object of an
    // incomplete type (or none given) can only be checked for being a valid
    // pointer.
    if (!argumentChecksReport() || isImplausibleRecord(type)) return 1;
    const uint64_t size = type != nullptr ? type->size : 0;
    checkSize(handOverFor(frame), ptr, size == 0 ? 1 : size, size == 0 ? 0 : 1, nullok != 0, argpos);
    return 1;
}

uint64_t _UPLibGetNumBytes(const void *ptr, int32_t argpos, const void *frame) noexcept
{
    return reachableBytes(slotOf(handOverFor(frame), argpos), ptr);
}

uint64_t _UPLibGetNumElems(const void *ptr, int32_t argpos, const void *frame) noexcept
{
    const ParameterSlot *slot = slotOf(handOverFor(frame), argpos);
    const uint64_t bytes = reachableBytes(slot, ptr);
    const uint64_t eltsize = slot != nullptr && slot->type != nullptr ? ArrayEltSizeEx(slot->type) : 0;
    return bytes == kNoLimit || eltsize == 0 ? bytes : bytes / eltsize;
}

const struct Tynode *_UPLibGetPtrArgType(int32_t argpos, const void *frame) noexcept
{
    const ParameterSlot *slot = slotOf(handOverFor(frame), argpos);
    return slot != nullptr ? slot->type : nullptr;
}

void _UPLibReturnArg(int32_t argpos, const void *frame) noexcept
{
    returnArgument(handOverFor(frame), argpos, nullptr);
}

void _UPLibClearArgs(void) noexcept
{
    clearArguments(parameterArea());
}

int32_t _UPLibIsProtectionAvailable(void) noexcept
{
    return checkingLevel() ? 1 : 0;
}
