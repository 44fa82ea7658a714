#include "rtcheck/report_sink.h"

#include <cstring>

#include <tollan/logger.h>

#include "logger/log.h"
#include "platform/system.h"
#include "rtcheck/error_file.h"
#include "rtcheck/remote_target.h"
#include "rtcheck/report_interactive.h"
#include "services/text_format.h"

namespace tollan::rtcheck {
namespace {

constexpr const char *kLogModule = "c/up_run";
constexpr const char *kRemoteTargetRefusal = "Sorry, you cannot run this program in the debugger!\n";
constexpr int kFatalExitStatus = -1;

// The logger's level a report of this severity is written at; a severity
// above 3, which no caller of the library gives, is logged as information.
uint32_t logLevelFor(int32_t severity) noexcept
{
    switch (severity) {
        case 3:
            return ZOR_LOG_FATAL;
        case 2:
            return ZOR_LOG_ERROR;
        case 1:
            return ZOR_LOG_WARNING;
        default:
            return ZOR_LOG_INFO;
    }
}

// The line goes to the log without its line end: the logger adds its own.
void logErrorFileLine(int32_t severity, const char *line) noexcept
{
    const uint32_t level = logLevelFor(severity);
    if (!logger::enabled(level)) return;
    size_t length = std::strlen(line);
    if (length > 0 && line[length - 1] == '\n') --length;
    WriteZORLogMessage(level, 0, 0, kLogModule, "ReportErrorMessage", 0, "%.*s", static_cast<int>(length),
                       line);
}

}  // namespace

void buildErrorFileLine(char *buffer, size_t size, const SourcePosition &position, int32_t severity,
                        const char *text, bool remoteTarget) noexcept
{
    const char *label = severity == 3 ? "FATAL" : "NON-FATAL";
    if (remoteTarget)
        services::formatTextInto(buffer, size, "%s", kRemoteTargetRefusal);
    else if (position.file != nullptr)
        services::formatTextInto(buffer, size, "%s[%2d,%2d]-[%2d,%2d]: %s - %s\n", position.file,
                                 static_cast<int>(position.firstLine), static_cast<int>(position.firstColumn),
                                 static_cast<int>(position.lastLine), static_cast<int>(position.lastColumn),
                                 label, text);
    else
        services::formatTextInto(buffer, size, "%s - %s\n", label, text);
}

void reportErrorMessage(int32_t severity, const char *text) noexcept
{
    if (severity <= 0) return;
    const SourcePosition position = currentSourcePosition();
    TollanFILE *file = errorFile();
    if (file == nullptr || !position.known) {
        reportInteractively(severity == 1 ? 2 : severity, text, position);
        return;
    }
    // One whole line in one call: the stream's lock keeps lines of threads
    // reporting at once from interleaving.
    char line[kReportLineSize];
    buildErrorFileLine(line, sizeof line, position, severity, text, remoteTargetLink() != nullptr);
    logErrorFileLine(severity, line);
    tollan_fputs(line, file);
    if (severity == 3) {
        tollan_fflush(file);
        platform::exitProcess(kFatalExitStatus);
    }
}

}  // namespace tollan::rtcheck
