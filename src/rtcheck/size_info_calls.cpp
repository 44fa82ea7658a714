// The size-information entry points: what a wrapper calls when the function
// it wraps hands out memory (returns it, stores it through an argument),
// resizes it or frees it.
#include <tollan/rtcheck.h>

#include "rtcheck/break_settings.h"
#include "rtcheck/pointer_info.h"
#include "rtcheck/size_info_records.h"

namespace tollan::rtcheck {
namespace {

PtrInfo infoOfBlock(const void *base, uint64_t size) noexcept
{
    if (base == nullptr) return nullPointerInfo();
    SizeInfoRecord *record = recordOf(base);
    if (record == nullptr) return uncheckedPointerInfo(base);
    describeBlock(*record, size);
    return pointerTo(*record);
}

PtrInfo infoOfStrings(char *const *strings, int64_t count) noexcept
{
    if (strings == nullptr) return nullPointerInfo();
    const bool terminated = count < 0;
    uint64_t described = terminated ? 0 : static_cast<uint64_t>(count);
    if (terminated)
        while (strings[described] != nullptr) ++described;
    SizeInfoRecord *record = recordOf(strings);
    if (record == nullptr || !describeStrings(*record, strings, described, terminated))
        return uncheckedPointerInfo(strings);
    return pointerTo(*record);
}

void handBack(const PtrInfo &info) noexcept
{
    if (ParameterArea *area = parameterArea()) area->returnValue = info;
}

// Where the pointer that argument argpos of the call to `frame` points at
// keeps its information: the argument's own information names that place.
// The slots are read as the caller filled them, also after _UPLibClearArgs,
// which forgets them but leaves them in place and the callee as previous.
// Null when the caller handed nothing over for the argument, or the place is
// a predefined entry or no plausible address.
PtrInfo *outputInformation(int32_t argpos, const void *frame) noexcept
{
    PtrInfo *argument = nullptr;
    if (const ParameterSlot *slot = callerSlot(argpos, frame)) {
        argument = slot->info;
    } else {
        const ParameterArea *area = parameterArea();
        if (area == nullptr || area->callee != nullptr || area->previousCallee == nullptr ||
            frame == nullptr || argpos < 1 || argpos > kParameterSlots ||
            followJumpStubs(area->previousCallee) != followJumpStubs(frame))
            return nullptr;
        argument = area->slots[argpos - 1].info;
    }
    if (argument == nullptr || isImplausibleRecord(argument)) return nullptr;
    // The first word of pointer information is an address that compiled code stored as a number.
    auto *place = reinterpret_cast<PtrInfo *>(  // NOLINT(performance-no-int-to-ptr)
        static_cast<uintptr_t>(resolvePtrInfo(argument)->info));
    if (place == nullptr || predefinedIndex(place) >= 0 || isImplausibleRecord(place)) return nullptr;
    return place;
}

}  // namespace
}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

void _UPReturnPointerSizeInfo(const void *ptr, uint64_t size) noexcept
{
    if (checkingLevel()) handBack(infoOfBlock(ptr, size));
}

int32_t _UPSetOutputPointerSizeInfo(int32_t argpos, const void *frame, const void *ptr,
                                    uint64_t size) noexcept
{
    if (!checkingLevel()) return 0;
    PtrInfo *place = outputInformation(argpos, frame);
    if (place == nullptr) return 0;
    *place = infoOfBlock(ptr, size);
    return 1;
}

int32_t _UPSetOutputStringArrayInfo(int32_t argpos, const void *frame, char *const *strings,
                                    int64_t count) noexcept
{
    if (!checkingLevel()) return 0;
    PtrInfo *place = outputInformation(argpos, frame);
    if (place == nullptr) return 0;
    *place = infoOfStrings(strings, count);
    return 1;
}

void _UPResizePointerSizeInfo(const void *oldPtr, const void *newPtr, uint64_t size) noexcept
{
    if (!checkingLevel()) return;
    // A failed resize leaves the old block as it was.
    if (newPtr == nullptr) return handBack(nullPointerInfo());
    if (oldPtr != newPtr && oldPtr != nullptr)
        if (SizeInfoRecord *moved = existingRecordOf(oldPtr)) markFreed(*moved, false);
    handBack(infoOfBlock(newPtr, size));
}

void _UPResizeStringArrayInfo(char *const *oldStrings, char *const *newStrings, int64_t count) noexcept
{
    if (!checkingLevel()) return;
    if (newStrings == nullptr) return handBack(nullPointerInfo());
    // The strings move with the array; only the array's old place is freed.
    if (oldStrings != newStrings && oldStrings != nullptr)
        if (SizeInfoRecord *moved = existingRecordOf(oldStrings)) markFreed(*moved, false);
    handBack(infoOfStrings(newStrings, count));
}

void _UPLibFreeDynPtrInfo(const void *ptr) noexcept
{
    if (ptr == nullptr) return;
    if (SizeInfoRecord *record = existingRecordOf(ptr)) markFreed(*record, false);
}

void _UPLibFreeStringArrayInfo(char *const *strings) noexcept
{
    if (strings == nullptr) return;
    if (SizeInfoRecord *record = existingRecordOf(strings)) markFreed(*record, true);
}
