#include "engine/library_slot.h"

#include "engine/engine_state.h"
#include "services/thread_var_scheme.h"
#include "services/thread_vars.h"

namespace tollan::engine {

using services::freeThreadData;
using services::threadVars;

namespace {

constinit int32_t slot = 0;

}  // namespace

bool AllocCrossLibraryThreadVarSlots() noexcept
{
    if (!threadVars().initialize(&slot)) return false;
    state.threadVarSlotsAllocated = true;
    return true;
}

void releaseCrossLibraryThreadVarSlots() noexcept
{
    if (!state.threadVarSlotsAllocated) return;
    threadVars().freeThreadBlock();
    threadVars().uninitialize(slot);
    state.threadVarSlotsAllocated = false;
}

void freeLibrarySlotValue() noexcept
{
    freeThreadData(threadVars().get(slot));
    threadVars().set(slot, nullptr);
}

int32_t librarySlot() noexcept
{
    return slot;
}

}  // namespace tollan::engine
