// The library's own way into the logger. A disabled level costs one relaxed
// atomic load: the arguments are not even evaluated.
#pragma once

#include <atomic>
#include <cstdint>

#include <tollan/logger.h>

namespace tollan::logger {

// The level mask, shared with GetZORLogReportingLevels.
extern std::atomic<uint32_t> levelMask;

inline bool enabled(uint32_t level) noexcept
{
    return (levelMask.load(std::memory_order_relaxed) & level) != 0;
}

// Non-zero while the logger reads its own settings; code that the logger
// itself calls (the settings store, growing lists) skips its log lines then.
// The counter nests: every begin is matched by one end.
bool configuring() noexcept;
void beginConfiguring() noexcept;
void endConfiguring() noexcept;

// ZORAssert for a fixed text: message (may be null) is written as it stands,
// never read as a format.
void reportAssertion(const char *expression, const char *file, const char *function, int32_t line,
                     const char *message) noexcept;

}  // namespace tollan::logger

// Writes a line at `level` from source `module`, function `function`, when that
// level is enabled.
#define TOLLAN_LOG(level, module, function, ...)                                            \
    do {                                                                                    \
        if (::tollan::logger::enabled(level))                                               \
            WriteZORLogMessage((level), 0, 0, (module), (function), __LINE__, __VA_ARGS__); \
    } while (0)

// Reports a failed check through ZORAssert with the check's own text.
#define TOLLAN_ASSERT_FAILED(expressionText, module, function) \
    ::tollan::logger::reportAssertion((expressionText), (module), (function), __LINE__, nullptr)
