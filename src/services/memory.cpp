#include "services/memory.h"

#include <atomic>
#include <cstring>

#include "platform/memory.h"

namespace tollan::services {
namespace {

std::atomic<void *> libraryHeap{nullptr};

void *heap() noexcept
{
    void *current = libraryHeap.load(std::memory_order_acquire);
    return current != nullptr ? current : platform::processHeap();
}

// Some allocators answer a request for 0 bytes with null.
size_t atLeastOne(size_t bytes) noexcept
{
    return bytes == 0 ? 1 : bytes;
}

}  // namespace

bool SetUpMemory() noexcept
{
    void *processHeap = platform::processHeap();
    libraryHeap.store(processHeap, std::memory_order_release);
    return processHeap != nullptr;
}

void *allocateBlock(size_t bytes) noexcept
{
    return platform::heapAllocate(heap(), atLeastOne(bytes));
}

void *allocateZeroedBlock(size_t bytes) noexcept
{
    void *block = allocateBlock(bytes);
    if (block != nullptr) std::memset(block, 0, bytes);
    return block;
}

void *resizeBlock(void *block, size_t bytes) noexcept
{
    return platform::heapResize(heap(), block, atLeastOne(bytes));
}

void freeBlock(void *block) noexcept
{
    platform::heapFree(heap(), block);
}

}  // namespace tollan::services
