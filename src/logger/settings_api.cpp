// The exported settings of the logger: level mask, output and template.
#include <mutex>

#include <tollan/logger.h>

#include "logger/log.h"
#include "logger/state.h"

using tollan::logger::levelMask;
using tollan::logger::LoggerState;
using tollan::logger::state;

uint32_t GetZORLogReportingLevels(void) noexcept
{
    return levelMask.load();
}

uint32_t SetZORLogReportingLevels(uint32_t mask) noexcept
{
    return levelMask.exchange(mask);
}

int32_t SetZORLogReportingLocation(uint32_t location, int32_t fileFormat, const char *fileName) noexcept
{
    LoggerState &logger = state();
    std::lock_guard<tollan::platform::RecursiveLock> hold(logger.lock);
    return logger.output.select(location, fileFormat, fileName) ? 1 : 0;
}

void SetZORLogOutputFormat(const char *lineTemplate) noexcept
{
    LoggerState &logger = state();
    std::lock_guard<tollan::platform::RecursiveLock> hold(logger.lock);
    logger.lineTemplate.assign(lineTemplate);
}

const char *GetZORLogOutputFormat(void) noexcept
{
    LoggerState &logger = state();
    std::lock_guard<tollan::platform::RecursiveLock> hold(logger.lock);
    const char *current = logger.lineTemplate.text();
    if (current == tollan::logger::LineTemplate::kDefault) return current;
    // The caller keeps the pointer while other threads may change the
    // template: it gets a copy that lives as long as the process.
    if (const char *kept = logger.handedOutTemplates.keep(current)) return kept;
    logger.lineTemplate.pin();
    return current;
}
