// The library's memory manager: the blocks of the list's default allocator
// and the libraries' per-thread records come from the heap that SetUpMemory
// takes at start-up (the process heap on Windows, the C library's allocator
// elsewhere). Blocks may be taken before it runs; they come from the same
// heap.
#pragma once

#include <cstddef>

namespace tollan::services {

// Takes the process heap for the library; false when the system has none.
bool SetUpMemory() noexcept;

// Blocks of the library's heap: null when memory is short. A block of 0
// bytes is a real block of its own. Resizing keeps the contents (and, on
// failure, the old block); freeing null does nothing.
void *allocateBlock(size_t bytes) noexcept;
void *allocateZeroedBlock(size_t bytes) noexcept;
void *resizeBlock(void *block, size_t bytes) noexcept;
void freeBlock(void *block) noexcept;

}  // namespace tollan::services
