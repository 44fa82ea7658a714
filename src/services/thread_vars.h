// Per-thread data of the library's own libraries. Each library owns one cell
// (its slot, from InitializeZORThreadVar) of a per-thread block of eight;
// the cell holds the library's per-thread record.
#pragma once

#include <cstddef>

namespace tollan::services {

// A zero-filled block of `bytes` bytes for a per-thread record; null when
// memory is short.
void *allocThreadData(size_t bytes) noexcept;
// Frees a block from allocThreadData; null is ignored.
void freeThreadData(void *block) noexcept;
// Whether the calling thread has a block of cells (false before the scheme
// has its thread-local index).
bool threadHasBlock() noexcept;

}  // namespace tollan::services
