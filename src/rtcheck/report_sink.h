// The error sink: every report, whatever raised it, ends here with its
// severity and its formatted text.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rtcheck/report_position.h"

namespace tollan::rtcheck {

// Room for a report's text, and for the error-file line built from it.
inline constexpr size_t kReportTextSize = 4096;
inline constexpr size_t kReportLineSize = kReportTextSize + 512;

// The error file's line for a report, terminated in buffer (cut at size):
// "<file>[%2d,%2d]-[%2d,%2d]: FATAL - <text>\n" (NON-FATAL below severity
// 3), "FATAL - <text>\n" without a file name, and the remote target's refusal
// instead of either on a remote target.
void buildErrorFileLine(char *buffer, size_t size, const SourcePosition &position, int32_t severity,
                        const char *text, bool remoteTarget) noexcept;

// Reports text at severity (0 and below: nothing): to the error file when one is set and the thread
// has a source position (a fatal report then ends the process with -1),
// else through the interactive report (a warning shown as a non-fatal
// error). Only severity 3 ends the process from the error file; a severity
// above 3 is written there as NON-FATAL and shown as fatal interactively.
// Returns when the program is to go on.
void reportErrorMessage(int32_t severity, const char *text) noexcept;

}  // namespace tollan::rtcheck
