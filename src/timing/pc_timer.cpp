// SetupPCTimer chooses the process clock's time source at start-up;
// RestorePCTimer gives back what it raised.
#include "services/lifecycle.h"
#include "services/configuration.h"
#include "logger/log.h"
#include "platform/clock.h"
#include "platform/multimedia_timer.h"
#include "timing/library.h"
#include "timing/time_source.h"
#include "timing/timer_clock.h"

namespace tollan::timing {

namespace {

constexpr const char *kModule = "Mgsource/Device";
constexpr const char *kFunction = "SetupPCTimer";

// Raises the multimedia timer's period to `periodMs` when the device allows
// it; the tick count stays in use otherwise.
void raiseMultimediaPeriod(uint32_t periodMs) noexcept
{
    uint32_t minPeriod = 0;
    uint32_t maxPeriod = 0;
    uint32_t error = platform::multimediaDeviceCaps(&minPeriod, &maxPeriod);
    if (error != platform::kTimerNoError) {
        TOLLAN_LOG(ZOR_LOG_ERROR, kModule, kFunction, "Failed to get timer's capabilities, err=%ld",
                   static_cast<long>(error));
        return;
    }
    TOLLAN_LOG(ZOR_LOG_INFO, kModule, kFunction, "timer min=%ld msec, max=%ld msec",
               static_cast<long>(minPeriod), static_cast<long>(maxPeriod));
    if (periodMs < minPeriod || periodMs > maxPeriod) return;
    error = platform::multimediaBeginPeriod(periodMs);
    if (error != platform::kTimerNoError) {
        TOLLAN_LOG(ZOR_LOG_ERROR, kModule, kFunction, "Failed to set the timer's resolution, err=%ld",
                   static_cast<long>(error));
        return;
    }
    useMultimediaTimer(periodMs);
}

}  // namespace

void SetupPCTimer() noexcept
{
    RestorePCTimer();  // a second choice gives back what the first one raised
    useTickCount();
    restartTimer();
    if (services::configurationSwitch("useDefaultTimer")) return;
    uint32_t wantedPeriodMs = 55;
    if (services::osVersionKnown()) {
        int64_t countsPerSecond = 0;
        if (platform::performanceFrequency(&countsPerSecond) && countsPerSecond > 0) {
            usePerformanceCounter(countsPerSecond);
            return;
        }
        wantedPeriodMs = 1;
    }
    raiseMultimediaPeriod(wantedPeriodMs);
}

void RestorePCTimer() noexcept
{
    if (const uint32_t periodMs = giveUpRaisedPeriod()) platform::multimediaEndPeriod(periodMs);
}

}  // namespace tollan::timing
