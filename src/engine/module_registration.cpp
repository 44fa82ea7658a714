// The exported module registration: user modules announce themselves when
// they load and leave when they unload.
#include <tollan/engine.h>

#include "engine/x87_control.h"
#include "services/lifecycle.h"
#include "services/run_state_table.h"

using tollan::services::lifecycle;
using tollan::services::runStateTable;

int32_t InitZORRTDll(void *module, const ZORRunStateCallback *callbacks) noexcept
{
    // Compiled modules rely on masked exceptions whether or not the library
    // could start.
    tollan::engine::maskX87Exceptions();
    if (!lifecycle().initialised.load() || lifecycle().detaching.load()) return 0;
    for (const ZORRunStateCallback *next = callbacks; next != nullptr && *next != nullptr; ++next)
        runStateTable().add(*next, module);  // a full table drops the callback silently
    runStateTable().start(module);
    return 1;
}

int32_t CloseZORRTDll(void *module) noexcept
{
    if (lifecycle().closed.load()) return 1;
    runStateTable().stop(module);
    return 1;
}
