#include "timing/scratch.h"

#include <tollan/engine.h>

#include <atomic>
#include <cstdint>

#include "engine/thread_vars.h"

namespace tollan::timing {

namespace {

std::atomic<int32_t> slot{0};  // 0: not reserved

}  // namespace

bool reserveScratchSlot() noexcept
{
    if (slot.load() != 0) return true;
    int32_t reserved = 0;
    if (!InitializeZORThreadVar(&reserved)) return false;
    slot.store(reserved);
    return true;
}

void releaseScratchSlot() noexcept
{
    const int32_t reserved = slot.exchange(0);
    if (reserved != 0) UninitializeZORThreadVar(reserved);
}

char *threadScratch() noexcept
{
    const int32_t reserved = slot.load();
    if (reserved == 0) return nullptr;
    if (void *block = GetZORThreadVarValue(reserved)) return static_cast<char *>(block);
    void *block = engine::allocThreadData(kScratchBytes);
    if (!block) return nullptr;
    SetZORThreadVarValue(reserved, block);
    // The cell cannot hold it when the thread's block of cells is missing.
    if (GetZORThreadVarValue(reserved) != block) {
        engine::freeThreadData(block);
        return nullptr;
    }
    return static_cast<char *>(block);
}

void freeThreadScratch() noexcept
{
    const int32_t reserved = slot.load();
    if (reserved == 0) return;
    if (void *block = GetZORThreadVarValue(reserved)) {
        engine::freeThreadData(block);
        SetZORThreadVarValue(reserved, nullptr);
    }
}

}  // namespace tollan::timing
