// The exported thread-variable functions: the library's one scheme, for
// libraries and user code that keep their own per-thread data.
#include <tollan/engine.h>

#include "services/thread_var_scheme.h"

using tollan::services::threadVars;

int32_t InitializeZORThreadVar(int32_t *slot) noexcept
{
    return threadVars().initialize(slot);
}

void *GetZORThreadVarValue(int32_t slot) noexcept
{
    return threadVars().get(slot);
}

void SetZORThreadVarValue(int32_t slot, void *value) noexcept
{
    threadVars().set(slot, value);
}

void UninitializeZORThreadVar(int32_t slot) noexcept
{
    threadVars().uninitialize(slot);
}
