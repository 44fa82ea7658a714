#include "debugger/standard_output.h"

#include "debugger/backend.h"
#include "debugger/channel.h"

namespace tollan::debugger {

int32_t forwardStandardOutput(const void *bytes, uint32_t count) noexcept
{
    BackendTable &table = currentBackend();
    if (table.connectedWord == 0) return ZOR_DEBUG_NOT_CONNECTED;
    return table.standardOutput != nullptr ? table.standardOutput(bytes, count) : 0;
}

}  // namespace tollan::debugger
