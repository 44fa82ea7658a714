#include "logger/writer.h"

#include <mutex>

#include <tollan/logger.h>

#include "logger/state.h"

namespace tollan::logger {

void emitLine(uint32_t level, bool noLineEnd, bool echo, const char *file, const char *function, int32_t line,
              const LineBuffer &message) noexcept
{
    LoggerState &logger = state();
    std::lock_guard<platform::RecursiveLock> hold(logger.lock);
    LineBuffer text;
    logger.lineTemplate.expand({level, file, function, line, message.data(), message.size()},
                               logger.timeStamp, text);
    if (!noLineEnd) text.append('\n');
    logger.output.write(text.data(), text.size(), !noLineEnd);
    if (echo) logger.output.echo(message.data(), message.size());
}

void emitAssertion(const char *expression, const char *file, const char *function, int32_t line,
                   const char *message) noexcept
{
    constexpr size_t kReportLimit = 1023;
    LineBuffer report;
    report.append("Assertion failed: ");
    report.append(expression);
    if (message) {
        report.append(" (");
        report.append(message);
        report.append(')');
    }
    report.truncate(kReportLimit);
    emitLine(ZOR_LOG_FATAL, false, false, file, function, line, report);
}

}  // namespace tollan::logger
