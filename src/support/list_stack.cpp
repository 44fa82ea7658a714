// A stack over a list made with the default record: pushes and pops at the end.
#include "support/list_allocator.h"
#include "support/list_internal.h"

int32_t SNew(StackType *stack, uint32_t itemSize) noexcept
{
    if (stack == nullptr) return kListErrMemoryFull;
    *stack = LCreateWithOptions(itemSize, 0, 0, tollan::support::defaultListAllocator());
    return *stack == nullptr ? kListErrMemoryFull : kListNoError;
}

int32_t SPush(StackType stack, const void *item) noexcept
{
    return LInsertItem(stack, item, kEndOfList);
}

// STop and SPop report misuse through the list's assertions and return 0.
int32_t STop(StackType stack, void *buffer) noexcept
{
    LGetItem(stack, buffer, kEndOfList);
    return kListNoError;
}

int32_t SPop(StackType stack, void *buffer) noexcept
{
    LRemoveItem(stack, buffer, kEndOfList);
    return kListNoError;
}

void SClear(StackType stack) noexcept
{
    if (stack != nullptr) LClear(stack);
}

void SDispose(StackType *stack) noexcept
{
    if (stack == nullptr || *stack == nullptr) return;
    DLDiscard(*stack);
    *stack = nullptr;
}
