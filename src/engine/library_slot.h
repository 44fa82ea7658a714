// The library's own cell in the thread-variable scheme, reserved first thing
// at process attach.
#pragma once

#include <cstdint>

namespace tollan::engine {

// Reserves the slot; false (with the start-up failure flag set) when the
// system has no thread-local index left. Sets the slots-allocated flag.
bool AllocCrossLibraryThreadVarSlots() noexcept;
// When the slots-allocated flag is set: frees the calling thread's block,
// releases the slot and clears the flag.
void releaseCrossLibraryThreadVarSlots() noexcept;
// Frees the calling thread's value of the library's own slot.
void freeLibrarySlotValue() noexcept;
// The slot number, 0 before it was reserved.
int32_t librarySlot() noexcept;

}  // namespace tollan::engine
