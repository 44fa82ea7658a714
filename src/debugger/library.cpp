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

void releaseThreadState() noexcept
{
    releaseCurrentThreadEnv();
    freeExecutionThreadData();
}

}  // namespace tollan::debugger
