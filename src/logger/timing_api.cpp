// The exported timing handles and timing events.
#include <cstdarg>
#include <mutex>

#include <tollan/logger.h>

#include "logger/line_buffer.h"
#include "logger/state.h"
#include "logger/writer.h"

using tollan::logger::LoggerState;
using tollan::logger::nowMicroseconds;
using tollan::logger::state;

namespace {

using Hold = std::lock_guard<tollan::platform::RecursiveLock>;

}  // namespace

uint32_t GetZORLogTimingHandle(void) noexcept
{
    LoggerState &logger = state();
    Hold hold(logger.lock);
    return logger.timing.take(nowMicroseconds());
}

void UpdateZORLogTimingHandle(uint32_t handle) noexcept
{
    LoggerState &logger = state();
    Hold hold(logger.lock);
    logger.timing.restart(handle, nowMicroseconds());
}

void ReleaseZORLogTimingHandle(uint32_t handle) noexcept
{
    LoggerState &logger = state();
    Hold hold(logger.lock);
    logger.timing.release(handle);
}

void WriteZORLogTimingEvent(uint32_t handle, int32_t release, int32_t update, int32_t noLineEnd, int32_t echo,
                            const char *file, const char *function, int32_t line, const char *format,
                            ...) noexcept
{
    LoggerState &logger = state();
    Hold hold(logger.lock);
    int64_t now = nowMicroseconds();
    int64_t start = 0;
    if (!logger.timing.startOf(handle, &start)) return;

    tollan::logger::LineBuffer message;
    va_list args;
    va_start(args, format);
    message.appendFormatted(format, args);
    va_end(args);
    char elapsed[64];
    tollan::logger::formatElapsed(now - start, elapsed, sizeof elapsed);
    message.replaceFirst("[ELAPSED]", elapsed);
    tollan::logger::emitLine(ZOR_LOG_TIMING, noLineEnd != 0, echo != 0, file, function, line, message);

    if (release)
        logger.timing.release(handle);
    else if (update)
        logger.timing.restart(handle, now);
}
