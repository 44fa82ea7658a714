// The multimedia timer service of winmm. The process clock uses the entry
// points the library links against; the loadable service takes its own
// reference to winmm.dll and finds its seven entry points by name.
#include "platform/multimedia_timer.h"

#include <windows.h>
#include <mmsystem.h>

#include <new>

namespace tollan::platform {

namespace {

using TimeGetSystemTimeProc = MMRESULT(WINAPI *)(LPMMTIME, UINT);
using TimeGetTimeProc = DWORD(WINAPI *)();
using TimeSetEventProc = MMRESULT(WINAPI *)(UINT, UINT, LPTIMECALLBACK, DWORD_PTR, UINT);
using TimeKillEventProc = MMRESULT(WINAPI *)(UINT);
using TimeGetDevCapsProc = MMRESULT(WINAPI *)(LPTIMECAPS, UINT);
using TimePeriodProc = MMRESULT(WINAPI *)(UINT);

template <typename Proc>
bool resolve(HMODULE module, const char *name, Proc *proc) noexcept
{
    // GetProcAddress's generic type goes through the one function type that
    // every other converts from without a warning.
    *proc = reinterpret_cast<Proc>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
    return *proc != nullptr;
}

// timeGetDevCaps through the given entry point.
uint32_t readDeviceCaps(TimeGetDevCapsProc getDevCaps, uint32_t *minPeriodMs, uint32_t *maxPeriodMs) noexcept
{
    if (!minPeriodMs || !maxPeriodMs) return TIMERR_NOCANDO;
    TIMECAPS caps{};
    const MMRESULT result = getDevCaps(&caps, sizeof caps);
    if (result == TIMERR_NOERROR) {
        *minPeriodMs = caps.wPeriodMin;
        *maxPeriodMs = caps.wPeriodMax;
    }
    return result;
}

void CALLBACK deliverEvent(UINT eventId, UINT, DWORD_PTR user, DWORD_PTR, DWORD_PTR)
{
    auto *target = reinterpret_cast<TimerEventTarget *>(user);
    target->fire(eventId, target->context);
}

class WinmmTimer final : public MultimediaTimer {
public:
    explicit WinmmTimer(HMODULE module) noexcept : module_(module) {}
    ~WinmmTimer() override { FreeLibrary(module_); }

    bool resolveAll() noexcept
    {
        return resolve(module_, "timeGetSystemTime", &getSystemTime_) &&
               resolve(module_, "timeGetTime", &getTime_) && resolve(module_, "timeSetEvent", &setEvent_) &&
               resolve(module_, "timeKillEvent", &killEvent_) &&
               resolve(module_, "timeGetDevCaps", &getDevCaps_) &&
               resolve(module_, "timeBeginPeriod", &beginPeriod_) &&
               resolve(module_, "timeEndPeriod", &endPeriod_);
    }

    uint32_t timeMs() noexcept override { return getTime_(); }

    uint32_t systemTimeMs() noexcept override
    {
        MMTIME time{};
        time.wType = TIME_MS;
        if (getSystemTime_(&time, sizeof time) != TIMERR_NOERROR) return 0;
        return time.u.ms;
    }

    uint32_t deviceCaps(uint32_t *minPeriodMs, uint32_t *maxPeriodMs) noexcept override
    {
        return readDeviceCaps(getDevCaps_, minPeriodMs, maxPeriodMs);
    }

    uint32_t beginPeriod(uint32_t periodMs) noexcept override { return beginPeriod_(periodMs); }
    uint32_t endPeriod(uint32_t periodMs) noexcept override { return endPeriod_(periodMs); }

    uint32_t setEvent(uint32_t delayMs, uint32_t resolutionMs, TimerEventTarget *target,
                      bool periodic) noexcept override
    {
        if (!target || !target->fire) return 0;
        return setEvent_(delayMs, resolutionMs, &deliverEvent, reinterpret_cast<DWORD_PTR>(target),
                         (periodic ? TIME_PERIODIC : TIME_ONESHOT) | TIME_CALLBACK_FUNCTION);
    }

    uint32_t killEvent(uint32_t eventId) noexcept override { return killEvent_(eventId); }

private:
    HMODULE module_;
    TimeGetSystemTimeProc getSystemTime_ = nullptr;
    TimeGetTimeProc getTime_ = nullptr;
    TimeSetEventProc setEvent_ = nullptr;
    TimeKillEventProc killEvent_ = nullptr;
    TimeGetDevCapsProc getDevCaps_ = nullptr;
    TimePeriodProc beginPeriod_ = nullptr;
    TimePeriodProc endPeriod_ = nullptr;
};

}  // namespace

uint32_t multimediaDeviceCaps(uint32_t *minPeriodMs, uint32_t *maxPeriodMs) noexcept
{
    return readDeviceCaps(&timeGetDevCaps, minPeriodMs, maxPeriodMs);
}

uint32_t multimediaBeginPeriod(uint32_t periodMs) noexcept
{
    return timeBeginPeriod(periodMs);
}

uint32_t multimediaEndPeriod(uint32_t periodMs) noexcept
{
    return timeEndPeriod(periodMs);
}

uint32_t multimediaTimeMs() noexcept
{
    return timeGetTime();
}

std::unique_ptr<MultimediaTimer> MultimediaTimer::load() noexcept
{
    const HMODULE module = LoadLibraryA("winmm.dll");
    if (!module) return nullptr;
    std::unique_ptr<WinmmTimer> timer(new (std::nothrow) WinmmTimer(module));
    if (!timer) {
        FreeLibrary(module);
        return nullptr;
    }
    if (!timer->resolveAll()) return nullptr;  // the destructor unloads the module
    return timer;
}

}  // namespace tollan::platform
