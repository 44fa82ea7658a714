#include "services/resource_failure.h"

#include "logger/log.h"

namespace tollan::services {

void logResourceFailure(const char *module, const char *function, int32_t line, const char *what) noexcept
{
    if (!logger::enabled(ZOR_LOG_WARNING) || logger::configuring()) return;
    WriteZORLogMessage(ZOR_LOG_WARNING, 0, 0, module, function, line, "%s", what);
}

}  // namespace tollan::services
