// The argument checks that checked twins are built from, as the twins call
// them. A twin looks at the thread's hand-over once (handOverFor); each
// check then says whether the argument passed (true also when it carries no
// information) and has reported it otherwise. The exported _UPLib entry
// points are thin shells over these.
#pragma once

#include <cstdint>

#include "rtcheck/checking_environment.h"

namespace tollan::rtcheck {

// The byte count of count elements of eltsize bytes; a product that
// overflows 64 bits counts as 4,294,967,295 bytes: a 32-bit ceiling that
// checked programs rely on, kept on purpose.
inline constexpr uint64_t kOverflowedByteCount = UINT64_C(4294967295);
uint64_t neededBytes(uint64_t eltsize, uint64_t count) noexcept;

// Whether a check may report now: checking level and the thread's break on
// protection errors. Nothing is checked when it may not.
bool argumentChecksReport() noexcept;

// The calling thread's hand-over as the function at `frame` sees it.
struct HandOverView {
    ParameterArea *area;  // null: the thread has none
    bool toFrame;         // the caller's call went to frame: its slots are ours
};
HandOverView handOverFor(const void *frame) noexcept;

// The filled slot of argument argpos (from 1); null without information.
inline const ParameterSlot *slotOf(const HandOverView &view, int32_t argpos) noexcept
{
    if (!view.toFrame || argpos < 1 || argpos > view.area->slotCount || argpos > kParameterSlots)
        return nullptr;
    const ParameterSlot &slot = view.area->slots[argpos - 1];
    return slot.info != nullptr ? &slot : nullptr;
}

// str must be a string terminated inside what it reaches; a null str passes
// when nullok. Only called once argumentChecksReport() said yes.
bool checkString(const HandOverView &view, const char *str, bool nullok, int32_t argpos) noexcept;
// The same for a string of wide characters.
bool checkWideString(const HandOverView &view, const wchar_t *str, bool nullok, int32_t argpos) noexcept;

// ptr must have room for count elements of eltsize bytes (eltsize 0
// passes; count 0 asks only for a valid pointer). Only called once
// argumentChecksReport() said yes.
bool checkSize(const HandOverView &view, const void *ptr, uint64_t eltsize, uint64_t count, bool nullok,
               int32_t argpos) noexcept;

// The result is argument argpos, whose value is `value` (null: the one the
// information records): its pointer information becomes the return
// value's, or none when it carries none.
void returnArgument(const HandOverView &view, int32_t argpos, const void *value) noexcept;

// Forgets the thread's hand-over, keeping the callee as the previous one,
// so that the library calls made inside the plain function see no slots.
void clearArguments(ParameterArea *area) noexcept;

}  // namespace tollan::rtcheck
