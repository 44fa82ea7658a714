// Resource failures: memory for a table entry or a per-thread record, a lock
// or an event that cannot be made. Every library logs them the same way: a
// WARNING line with its source module and the function that failed, skipped
// while the logger reads its own settings (the failure may be on the
// logger's own path).
#pragma once

#include <cstdint>

namespace tollan::services {

// Writes `what` as a WARNING line from module/function at `line`, when
// WARNING is enabled and the logger is not configuring itself.
void logResourceFailure(const char *module, const char *function, int32_t line, const char *what) noexcept;

}  // namespace tollan::services

#define TOLLAN_RESOURCE_FAILURE(module, function, what) \
    ::tollan::services::logResourceFailure((module), (function), __LINE__, (what))
