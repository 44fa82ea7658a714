// Walks the rows of startup_table.cpp for the chain functions.
#pragma once

#include <cstdint>
#include <span>

#include "engine/startup_table.h"

namespace tollan::engine {

// Where a stage's trace lines come from.
struct TraceSite {
    uint32_t level;
    const char *module;
    const char *function;
};

// Runs the rows of `stage` in order, tracing each success. Returns the row
// that stopped the stage, or null when every row ran. In the processAttach
// stage every failure stops; elsewhere only a row with a failure code does.
const StartupStep *runStage(std::span<const StartupStep> steps, Stage stage, const TraceSite &site) noexcept;

// Runs the clean-ups of one phase by ascending rank (row order among equals).
void runCleanups(std::span<const StartupStep> steps, CleanupPhase phase) noexcept;

// Runs every row's per-thread clean-up by ascending rank.
void runThreadCleanups(std::span<const StartupStep> steps) noexcept;

}  // namespace tollan::engine
