#include "engine/step_runner.h"

#include <array>

#include "logger/log.h"

namespace tollan::engine {
namespace {

constexpr const char *kModule = "mgsource/window";

// The table is small and fixed: an insertion sort of pointers is stable and
// needs no allocation while the process is unloading.
constexpr size_t kMaxSteps = 64;

void runInRankOrder(std::span<const StartupStep> steps, auto selected, auto rankOf, auto run)
{
    std::array<const StartupStep *, kMaxSteps> order{};
    size_t count = 0;
    for (const StartupStep &step : steps) {
        if (!selected(step) || count == order.size()) continue;
        size_t at = count++;
        for (; at > 0 && rankOf(*order[at - 1]) > rankOf(step); --at) order[at] = order[at - 1];
        order[at] = &step;
    }
    for (size_t i = 0; i < count; ++i) run(*order[i]);
}

}  // namespace

const StartupStep *runStage(std::span<const StartupStep> steps, Stage stage, const TraceSite &site) noexcept
{
    for (const StartupStep &step : steps) {
        if (step.stage != stage || step.initOnce == nullptr) continue;
        if (!step.initOnce()) {
            if (stage == Stage::processAttach || step.failureCode != 0) return &step;
        }
        if (step.trace != nullptr) TOLLAN_LOG(site.level, site.module, site.function, "%s", step.trace);
    }
    return nullptr;
}

void runCleanups(std::span<const StartupStep> steps, CleanupPhase phase) noexcept
{
    const uint32_t level = phase == CleanupPhase::afterClose ? ZOR_LOG_DLLMAIN : ZOR_LOG_TRACE;
    const char *function = phase == CleanupPhase::afterClose ? "DllMain" : "CloseRTDll";
    runInRankOrder(
        steps, [phase](const StartupStep &step) { return step.cleanup.phase == phase && step.cleanup.run; },
        [](const StartupStep &step) { return step.cleanup.rank; },
        [&](const StartupStep &step) {
            step.cleanup.run();
            if (step.cleanup.trace != nullptr) TOLLAN_LOG(level, kModule, function, "%s", step.cleanup.trace);
        });
}

void runThreadCleanups(std::span<const StartupStep> steps) noexcept
{
    runInRankOrder(
        steps, [](const StartupStep &step) { return step.threadCleanup.run != nullptr; },
        [](const StartupStep &step) { return step.threadCleanup.rank; },
        [](const StartupStep &step) { step.threadCleanup.run(); });
}

}  // namespace tollan::engine
