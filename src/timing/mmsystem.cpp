#include "timing/mmsystem.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <new>

#include "logger/log.h"

namespace tollan::timing {

namespace {

constexpr const char *kModule = "Timing/MMSystem";

std::atomic<uint32_t> chainLimitMs{MMSystem::kChainLimitMs};

void ignoreCallback(void *) noexcept {}

}  // namespace

struct MMSystem::Record {
    MMSystem *engine;
    std::atomic<ZORUSTECallback> callback;
    void *callbackData;
    // Under the engine's lock:
    uint32_t eventId = 0;     // 0: no event will come
    bool eventSpent = false;  // the event is a one-shot that has fired
    uint32_t periodMs = 0;
    uint32_t periodStartMs = 0;          // start of the current period (chained timers)
    std::atomic<bool> discarded{false};  // read by the event's thread without the lock
    platform::TimerEventTarget periodicTarget{&MMSystem::periodicEvent, this};
    platform::TimerEventTarget chainTarget{&MMSystem::chainEvent, this};

    Record(MMSystem *owner, ZORUSTECallback function, void *data) noexcept
        : engine(owner), callback(function), callbackData(data)
    {
    }
};

void MMSystem::setChainLimitForTesting(uint32_t limitMs) noexcept
{
    chainLimitMs.store(limitMs == 0 ? kChainLimitMs : limitMs);
}

bool MMSystem::startUp() noexcept
{
    std::lock_guard guard(lock_);
    if (service_) return true;
    std::unique_ptr<platform::MultimediaTimer> service = loader_();
    if (!service) return false;
    if (service->deviceCaps(&minPeriodMs_, &maxPeriodMs_) != platform::kTimerNoError) return false;
    service_ = std::move(service);
    return true;
}

int32_t MMSystem::localTime(ZORUSTETimeValue *now) noexcept
{
    const uint32_t ms = service_->timeMs();
    *now = ZORUSTETimeValue{ms / 1000, ms % 1000 * 1000000};
    return ZORUSTE_SUCCESS;
}

int32_t MMSystem::resolution(ZORUSTETimeValue *resolution) noexcept
{
    uint32_t periodMs = minPeriodMs_;
    if (minPeriodMs_ < 2) periodMs = minPeriodMs_ == 0 && maxPeriodMs_ == 0 ? 0 : 1;
    // Each query raises the system timer rate once more; it is never given back.
    const uint32_t error = service_->beginPeriod(periodMs);
    if (error != platform::kTimerNoError) return static_cast<int32_t>(error);
    *resolution = ZORUSTETimeValue{periodMs / 1000, periodMs % 1000 * 1000000};
    return ZORUSTE_SUCCESS;
}

void *MMSystem::newTimer(ZORUSTECallback callback, void *callbackData) noexcept
{
    return new (std::nothrow) Record(this, callback, callbackData);
}

void MMSystem::discardTimer(void *timer) noexcept
{
    auto *record = static_cast<Record *>(timer);
    std::unique_lock guard(lock_);
    record->callback.store(&ignoreCallback);
    record->discarded.store(true);
    // With an event under way, its next delivery frees the record.
    if (record->eventId != 0) return;
    guard.unlock();
    delete record;
}

bool MMSystem::setTimer(void *timer, const ZORUSTETimeValue &period) noexcept
{
    auto *record = static_cast<Record *>(timer);
    const double wantedMs = period.nanoseconds / 1000000.0 + period.seconds * 1000.0;
    if (!(wantedMs >= 1.0) || wantedMs > UINT32_MAX) return false;
    const uint32_t periodMs = std::max(static_cast<uint32_t>(wantedMs), minPeriodMs_);
    const uint32_t limitMs = chainLimitMs.load();

    std::lock_guard guard(lock_);
    const uint32_t eventId = periodMs <= limitMs
                                 ? service_->setEvent(periodMs, minPeriodMs_, &record->periodicTarget, true)
                                 : service_->setEvent(limitMs, minPeriodMs_, &record->chainTarget, false);
    if (eventId == 0) return false;
    if (record->eventId != 0 && !record->eventSpent &&
        service_->killEvent(record->eventId) != platform::kTimerNoError) {
        service_->killEvent(eventId);
        return false;
    }
    record->eventId = eventId;
    record->eventSpent = false;
    record->periodMs = periodMs;
    record->periodStartMs = service_->timeMs();
    return true;
}

int32_t MMSystem::setPriority(void *, int32_t) noexcept
{
    return 0;
}

int32_t MMSystem::getPriority(void *) noexcept
{
    return 0;
}

void MMSystem::runCallback(Record &record) noexcept
{
    record.callback.load()(record.callbackData);
}

void MMSystem::periodicEvent(uint32_t eventId, void *context) noexcept
{
    auto &record = *static_cast<Record *>(context);
    MMSystem &engine = *record.engine;
    {
        std::lock_guard guard(engine.lock_);
        if (eventId != record.eventId) return;  // replaced by a newer event
    }
    runCallback(record);
    if (!record.discarded.load()) return;
    {
        // The record's event may have been replaced while the callback ran.
        std::lock_guard guard(engine.lock_);
        engine.service_->killEvent(record.eventId);
    }
    delete &record;
}

uint32_t MMSystem::catchUp(Record &record) noexcept
{
    std::unique_lock guard(lock_);
    const uint32_t periodMs = record.periodMs;
    uint32_t elapsedMs = service_->timeMs() - record.periodStartMs;
    if (elapsedMs < periodMs) return elapsedMs;
    record.periodStartMs += periodMs;
    guard.unlock();
    runCallback(record);
    // Periods that went by meanwhile are made up for, one call each.
    guard.lock();
    elapsedMs = service_->timeMs() - record.periodStartMs;
    const uint32_t missed = elapsedMs / periodMs;
    record.periodStartMs += missed * periodMs;
    guard.unlock();
    for (uint32_t i = 0; i < missed; ++i) runCallback(record);
    return elapsedMs - missed * periodMs;
}

void MMSystem::chainEvent(uint32_t eventId, void *context) noexcept
{
    auto &record = *static_cast<Record *>(context);
    MMSystem &engine = *record.engine;
    {
        std::lock_guard guard(engine.lock_);
        if (eventId != record.eventId) return;  // replaced by a newer event
        record.eventSpent = true;
    }
    const uint32_t elapsedMs = engine.catchUp(record);
    engine.rearmChain(record, eventId, elapsedMs);
}

void MMSystem::rearmChain(Record &record, uint32_t eventId, uint32_t elapsedMs) noexcept
{
    std::unique_lock guard(lock_);
    if (record.discarded.load()) {
        // A period set anew meanwhile left an event that is still pending.
        if (!record.eventSpent) service_->killEvent(record.eventId);
        guard.unlock();
        delete &record;
        return;
    }
    if (eventId != record.eventId) return;  // the period was set anew meanwhile
    // The one-shot event that brought us here is spent: nothing to kill.
    const uint32_t delayMs = std::min(record.periodMs - elapsedMs, chainLimitMs.load());
    record.eventId = service_->setEvent(delayMs, minPeriodMs_, &record.chainTarget, false);
    record.eventSpent = false;
    if (record.eventId == 0)
        TOLLAN_LOG(ZOR_LOG_WARNING, kModule, "chainEvent",
                   "Failed to set the timer's next event, period=%u ms", record.periodMs);
}

}  // namespace tollan::timing
