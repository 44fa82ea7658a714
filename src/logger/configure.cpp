#include "logger/configure.h"

#include <atomic>
#include <mutex>

#include <tollan/logger.h>

#include "services/registry.h"
#include "logger/log.h"
#include "logger/state.h"

namespace tollan::logger {

namespace {

std::atomic<int32_t> configuringCount{0};

constexpr uint32_t kDefaultMask = ZOR_LOG_FATAL;
constexpr uint32_t kDefaultLocation = ZOR_LOG_LOCATION_STDERR;

}  // namespace

bool configuring() noexcept
{
    return configuringCount.load() != 0;
}

void beginConfiguring() noexcept
{
    configuringCount.fetch_add(1);
}

void endConfiguring() noexcept
{
    configuringCount.fetch_sub(1);
}

void configureFromSettings() noexcept
{
    // Values are read into temporaries: a reader that fails may still have
    // written into its buffer.
    uint32_t mask = 0;
    levelMask.store(services::RegGetLogLevel(&mask) == services::kRegSuccess ? mask : kDefaultMask);

    uint32_t stored = 0;
    uint32_t location =
        services::RegGetLogOutputLocation(&stored) == services::kRegSuccess ? stored : kDefaultLocation;
    if (location == ZOR_LOG_LOCATION_FILE) {
        char fileName[services::kRegStringBufferSize];
        uint32_t fileFormat = 0;
        if (services::RegGetLogFileName(fileName) == services::kRegSuccess &&
            services::RegGetLogFileFormat(&fileFormat) == services::kRegSuccess)
            SetZORLogReportingLocation(location, static_cast<int32_t>(fileFormat), fileName);
    } else {
        SetZORLogReportingLocation(location, 0, nullptr);
    }

    beginConfiguring();
    char lineTemplate[services::kRegStringBufferSize];
    if (services::RegGetLogFormat(lineTemplate) == services::kRegSuccess) SetZORLogOutputFormat(lineTemplate);
    endConfiguring();
}

}  // namespace tollan::logger

void ConfigureZORLoggerOnce(void) noexcept
{
    tollan::logger::LoggerState &logger = tollan::logger::state();
    std::lock_guard<tollan::platform::RecursiveLock> hold(logger.lock);
    if (logger.configured) return;
    tollan::logger::configureFromSettings();
    logger.configured = true;
}
