#include "services/thread_record.h"

#include "services/thread_var_scheme.h"
#include "services/thread_vars.h"

namespace tollan::services {

bool ThreadRecordSlot::reserve() noexcept
{
    if (slot_.load(std::memory_order_acquire) != 0) return true;
    int32_t slot = 0;
    if (threadVars().initialize(&slot) == 0) return false;
    slot_.store(slot, std::memory_order_release);
    return true;
}

void ThreadRecordSlot::release() noexcept
{
    freeRecord();
    const int32_t slot = slot_.exchange(0);
    if (slot != 0) threadVars().uninitialize(slot);
}

void *ThreadRecordSlot::record(size_t bytes, bool *made) noexcept
{
    if (made != nullptr) *made = false;
    const int32_t slot = slot_.load(std::memory_order_acquire);
    if (slot == 0) return nullptr;
    if (void *existing = threadVars().get(slot)) return existing;
    void *fresh = allocThreadData(bytes);
    if (fresh == nullptr) return nullptr;
    threadVars().set(slot, fresh);
    // The thread's block of cells itself could not be made: nothing holds it.
    if (threadVars().get(slot) != fresh) {
        freeThreadData(fresh);
        return nullptr;
    }
    if (made != nullptr) *made = true;
    return fresh;
}

void ThreadRecordSlot::freeRecord() noexcept
{
    const int32_t slot = slot_.load(std::memory_order_acquire);
    if (slot == 0) return;
    if (void *existing = threadVars().get(slot)) {
        threadVars().set(slot, nullptr);
        freeThreadData(existing);
    }
}

}  // namespace tollan::services
