// The heap the library's memory manager takes its blocks from: the process
// heap on Windows (GetProcessHeap, HeapAlloc), the C library's allocator
// elsewhere. Every function may be used before the memory manager starts.
#pragma once

#include <cstddef>

namespace tollan::platform {

// The process heap's handle; on POSIX a token for the C allocator. Null when
// the system has no heap to give.
void *processHeap() noexcept;
// Blocks of `heap`: null when memory is short; resizing keeps the contents
// (and the block itself on failure); freeing null does nothing.
void *heapAllocate(void *heap, size_t bytes) noexcept;
void *heapResize(void *heap, void *block, size_t bytes) noexcept;
void heapFree(void *heap, void *block) noexcept;

}  // namespace tollan::platform
