// The library's heap is the C library's allocator.
#include "platform/memory.h"

#include <cstdlib>

namespace tollan::platform {
namespace {

// Stands for the C allocator, so that a caller can tell "a heap" from none.
constinit char cAllocator = 0;

}  // namespace

void *processHeap() noexcept
{
    return &cAllocator;
}

void *heapAllocate(void *, size_t bytes) noexcept
{
    return std::malloc(bytes);
}

void *heapResize(void *, void *block, size_t bytes) noexcept
{
    return std::realloc(block, bytes);
}

void heapFree(void *, void *block) noexcept
{
    std::free(block);
}

}  // namespace tollan::platform
