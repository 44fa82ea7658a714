// The utility library's per-thread scratch block: 584 zeroed bytes, made on a
// thread's first use and kept in the library's thread-variable cell. DateStr
// writes at offset 0, TimeStr at offset 11.
#pragma once

#include <cstddef>

namespace tollan::timing {

inline constexpr size_t kScratchBytes = 584;
inline constexpr size_t kDateOffset = 0;
inline constexpr size_t kTimeOffset = 11;

// Reserves the thread-variable slot; false when none can be had.
bool reserveScratchSlot() noexcept;
// Releases the slot (after freeing the calling thread's block).
void releaseScratchSlot() noexcept;
// The calling thread's block, made on first use; null when there is no slot
// or no memory.
char *threadScratch() noexcept;
// Frees the calling thread's block, if it has one.
void freeThreadScratch() noexcept;

}  // namespace tollan::timing
