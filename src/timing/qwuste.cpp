#include "timing/qwuste.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>
#include <new>

#include "platform/dynamic_library.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace tollan::timing {

namespace {

constexpr uint64_t kNanosPerSecond = 1000000000;
constexpr uint32_t kLongestPeriodUs = 0x7FFFFFFF;  // due times are compared across the 32-bit wrap

bool reached(uint32_t dueUs, uint32_t nowUs) noexcept
{
    return static_cast<int32_t>(dueUs - nowUs) <= 0;
}

}  // namespace

struct QWUSTE::Record {
    QWUSTE *engine;
    platform::RecursiveLock lock;
    std::unique_ptr<platform::Event> wake;  // auto-reset: the first period is set, or the timer is stopped
    std::unique_ptr<platform::Thread> thread;
    uint32_t threadId = 0;
    // Under the lock:
    bool freesItself = false;
    uint32_t periodUs = 0;
    ZORUSTECallback callback;
    void *callbackData;

    Record(QWUSTE *owner, ZORUSTECallback function, void *data) noexcept
        : engine(owner), callback(function), callbackData(data)
    {
    }

    ZORUSTECallback currentCallback() noexcept
    {
        std::lock_guard guard(lock);
        return callback;
    }
};

bool QWUSTE::startUp() noexcept
{
    void *module = platform::loadLibrary("qwuste.dll");
    if (!module) return false;
    void *entry = platform::librarySymbol(module, "GetEngine__VANTREL");
    if (!entry) {
        platform::unloadLibrary(module);
        return false;
    }
    if (module_) platform::unloadLibrary(module_);
    module_ = module;
    engine_.store(reinterpret_cast<GetQwusteEngine>(entry)());
    return engine_.load() != nullptr;
}

int32_t QWUSTE::localTime(ZORUSTETimeValue *now) noexcept
{
    const auto ns = static_cast<uint64_t>(std::max<int64_t>(engine_.load()->currentTimeNs(), 0));
    *now = ZORUSTETimeValue{static_cast<uint32_t>(ns / kNanosPerSecond),
                            static_cast<uint32_t>(ns % kNanosPerSecond)};
    return ZORUSTE_SUCCESS;
}

int32_t QWUSTE::resolution(ZORUSTETimeValue *resolution) noexcept
{
    const QwusteTick tick = engine_.load()->tickValue();
    const double ticks = tick.seconds * 1e9 + tick.nanoseconds;
    const double seconds = ticks > 0 ? std::max(0.000001, 1.0 / ticks) : 0.000001;
    const double whole = std::floor(seconds);
    *resolution =
        ZORUSTETimeValue{static_cast<uint32_t>(whole), static_cast<uint32_t>((seconds - whole) * 1e9)};
    return ZORUSTE_SUCCESS;
}

void *QWUSTE::newTimer(ZORUSTECallback callback, void *callbackData) noexcept
{
    std::unique_ptr<Record> record(new (std::nothrow) Record(this, callback, callbackData));
    if (!record) return nullptr;
    record->wake = platform::Event::create(false, false, nullptr);
    if (!record->wake) return nullptr;
    record->thread = platform::Thread::start(&QWUSTE::timerThread, record.get());
    if (!record->thread) return nullptr;
    record->threadId = record->thread->id();
    record->thread->setPriority(platform::kThreadPriorityHighest);  // best effort
    return record.release();
}

bool QWUSTE::stop(Record &record, bool detach) noexcept
{
    // All under the lock: a thread that frees itself takes the lock before it
    // does, so the record outlives this call.
    std::lock_guard guard(record.lock);
    record.callback = nullptr;
    record.freesItself = detach || platform::currentThreadId() == record.threadId;
    record.wake->set();
    return record.freesItself;
}

void QWUSTE::discardTimer(void *timer) noexcept
{
    auto *record = static_cast<Record *>(timer);
    if (stop(*record, false)) return;
    record->thread->join();
    delete record;
}

void QWUSTE::releaseTimer(void *timer) noexcept
{
    stop(*static_cast<Record *>(timer), true);
}

bool QWUSTE::setTimer(void *timer, const ZORUSTETimeValue &period) noexcept
{
    auto *record = static_cast<Record *>(timer);
    const uint64_t periodUs = (period.seconds * kNanosPerSecond + period.nanoseconds) / 1000;
    if (periodUs > kLongestPeriodUs) return false;
    {
        std::lock_guard guard(record->lock);
        record->periodUs = std::max<uint32_t>(static_cast<uint32_t>(periodUs), 1);
    }
    record->wake->set();
    return true;
}

int32_t QWUSTE::setPriority(void *timer, int32_t priority) noexcept
{
    return static_cast<Record *>(timer)->thread->setPriority(priority) ? 1 : 0;
}

int32_t QWUSTE::getPriority(void *timer) noexcept
{
    return static_cast<Record *>(timer)->thread->priority();
}

uint32_t QWUSTE::nowUs() noexcept
{
    return static_cast<uint32_t>(engine_.load()->currentTimeNs() / 1000);
}

void QWUSTE::timerThread(void *context) noexcept
{
    auto &record = *static_cast<Record *>(context);
    record.wake->wait(platform::kWaitForever);
    record.engine->runPeriods(record);
    bool freesItself;
    {
        std::lock_guard guard(record.lock);
        freesItself = record.freesItself;
    }
    if (freesItself) delete &record;
}

void QWUSTE::runPeriods(Record &record) noexcept
{
    ZORUSTECallback callback;
    uint32_t periodUs;
    {
        std::lock_guard guard(record.lock);
        callback = record.callback;
        periodUs = record.periodUs;
    }
    uint32_t dueUs = nowUs();
    while (callback) {
        dueUs += periodUs;
        if (!reached(dueUs, nowUs())) engine_.load()->waitUntil(dueUs);
        const uint32_t beforeUs = nowUs();
        callback(record.callbackData);
        const uint32_t tookUs = nowUs() - beforeUs;
        // Periods the callback used up are made up for, one call each.
        for (uint32_t missed = tookUs / periodUs; missed > 0; --missed) {
            callback = record.currentCallback();
            if (!callback) return;
            dueUs += periodUs;
            callback(record.callbackData);
        }
        std::lock_guard guard(record.lock);
        callback = record.callback;
        periodUs = record.periodUs;
    }
}

}  // namespace tollan::timing
