// The library's heap is the process heap.
#include "platform/memory.h"

#include <windows.h>

namespace tollan::platform {

void *processHeap() noexcept
{
    return GetProcessHeap();
}

void *heapAllocate(void *heap, size_t bytes) noexcept
{
    return HeapAlloc(static_cast<HANDLE>(heap), 0, bytes);
}

void *heapResize(void *heap, void *block, size_t bytes) noexcept
{
    if (block == nullptr) return HeapAlloc(static_cast<HANDLE>(heap), 0, bytes);
    return HeapReAlloc(static_cast<HANDLE>(heap), 0, block, bytes);
}

void heapFree(void *heap, void *block) noexcept
{
    if (block != nullptr) HeapFree(static_cast<HANDLE>(heap), 0, block);
}

}  // namespace tollan::platform
