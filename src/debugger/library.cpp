#include "debugger/library.h"

#include "debugger/backend.h"
#include "debugger/channel.h"
#include "debugger/debugging_level.h"
#include "debugger/runtime_record.h"
#include "debugger/thread_env.h"

namespace tollan::debugger {

bool ZORDebugInitialize() noexcept
{
    readDebuggingLevelFromEnvironment();
    return CdbSynchronizeInitialize() == 0;
}

void threadEnds() noexcept
{
    BackendTable &table = currentBackend();
    if (table.connectedWord != 0 && table.threadEnds != nullptr) table.threadEnds();
}

void releaseExitingThreadState() noexcept
{
    // No thread detach comes for the thread that ends the process: its record
    // goes here, after the last text to the debugger and while the run-time
    // record that frees it is still there. A module that only adopted the
    // run-time record leaves it, as the thread may go on using it.
    if (ownsRuntimeRecord()) releaseCurrentThreadEnv();
}

void releaseThreadState() noexcept
{
    releaseCurrentThreadEnv();
    freeExecutionThreadData();
}

}  // namespace tollan::debugger
