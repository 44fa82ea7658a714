#include "fmtio/thread_state.h"

#include <atomic>

#include <tollan/engine.h>

#include "engine/thread_vars.h"
#include "fmtio/log_module.h"
#include "logger/log.h"

namespace tollan::fmtio {
namespace {

// 0 while the library has no cell.
std::atomic<int32_t> threadSlot{0};

// Used by threads whose own block could not be made.
constinit ThreadBlock fallbackBlock{};

}  // namespace

ThreadBlock &threadBlock() noexcept
{
    const int32_t slot = threadSlot.load(std::memory_order_acquire);
    if (slot == 0) return fallbackBlock;
    if (void *existing = GetZORThreadVarValue(slot)) return *static_cast<ThreadBlock *>(existing);

    void *fresh = engine::allocThreadData(sizeof(ThreadBlock));
    if (fresh == nullptr) {
        TOLLAN_LOG(ZOR_LOG_WARNING, kLogModule, "threadBlock", "no memory for the thread's I/O error block");
        return fallbackBlock;
    }
    SetZORThreadVarValue(slot, fresh);
    if (GetZORThreadVarValue(slot) != fresh) {
        // The thread's cell block itself could not be made: nothing holds ours.
        engine::freeThreadData(fresh);
        return fallbackBlock;
    }
    return *static_cast<ThreadBlock *>(fresh);
}

bool reserveThreadSlot() noexcept
{
    if (threadSlot.load(std::memory_order_acquire) != 0) return true;
    int32_t slot = 0;
    if (InitializeZORThreadVar(&slot) == 0) return false;
    threadSlot.store(slot, std::memory_order_release);
    return true;
}

void freeThreadBlock() noexcept
{
    const int32_t slot = threadSlot.load(std::memory_order_acquire);
    if (slot == 0) return;
    if (void *block = GetZORThreadVarValue(slot)) {
        SetZORThreadVarValue(slot, nullptr);
        engine::freeThreadData(block);
    }
}

void releaseThreadSlot() noexcept
{
    const int32_t slot = threadSlot.load(std::memory_order_acquire);
    if (slot == 0) return;
    freeThreadBlock();
    threadSlot.store(0, std::memory_order_release);
    UninitializeZORThreadVar(slot);
}

}  // namespace tollan::fmtio
