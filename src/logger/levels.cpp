#include "logger/levels.h"

#include <tollan/logger.h>

namespace tollan::logger {

const char *levelName(uint32_t level) noexcept
{
    switch (level) {
        case ZOR_LOG_TRACE:
            return "TRACE";
        case ZOR_LOG_TIMING:
            return "TIMING";
        case ZOR_LOG_INFO:
            return "INFO";
        case ZOR_LOG_TEMP:
            return "TEMP";
        case ZOR_LOG_WARNING:
            return "WARNING";
        case ZOR_LOG_ERROR:
            return "ERROR";
        case ZOR_LOG_FATAL:
            return "FATAL";
        case ZOR_LOG_BUILD:
            return "BUILD";
        case ZOR_LOG_DLLMAIN:
            return "DLLMAIN";
        default:
            return "UNKNOWN";
    }
}

}  // namespace tollan::logger
