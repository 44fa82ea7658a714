// A small external timing engine for the tests: the steady clock, a tick
// value of one microsecond and sleeping waits. Loaded at run time as
// "qwuste.dll" (libqwuste.so).
//
// A test may hold the clock (QwusteTestHoldClock): it then stands still until
// the test moves it on, and waits end when it reaches their due time, so that
// a test decides how long a callback takes and when a period is due.
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "timing/qwuste_engine.h"

#if defined(_WIN32)
#define QWUSTE_EXPORT __declspec(dllexport)
#else
#define QWUSTE_EXPORT __attribute__((visibility("default")))
#endif

namespace {

using tollan::timing::QwusteTick;

int64_t steadyNs() noexcept
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

class SteadyEngine final : public tollan::timing::QwusteEngine {
public:
    int64_t currentTimeNs() noexcept override { return held_.load() ? heldNs_.load() : steadyNs(); }

    QwusteTick tickValue() noexcept override { return QwusteTick{0, 1000000}; }

    void waitUntil(uint32_t dueUs) noexcept override
    {
        if (held_.load()) {
            std::unique_lock guard(lock_);
            ++waitsBegun_;
            moved_.wait(guard, [&] { return !held_.load() || leftUs(dueUs) <= 0; });
            return;
        }
        const int32_t left = leftUs(dueUs);
        if (left > 0) std::this_thread::sleep_for(std::chrono::microseconds(left));
    }

    void hold(int64_t ns) noexcept
    {
        std::lock_guard guard(lock_);
        heldNs_.store(ns);
        held_.store(true);
    }

    void move(int64_t ns) noexcept
    {
        {
            std::lock_guard guard(lock_);
            heldNs_.fetch_add(ns);
        }
        moved_.notify_all();
    }

    void release() noexcept
    {
        {
            std::lock_guard guard(lock_);
            held_.store(false);
        }
        moved_.notify_all();
    }

    int64_t waitsBegun() noexcept
    {
        std::lock_guard guard(lock_);
        return waitsBegun_;
    }

private:
    // Compared across the wrap of the 32-bit microsecond clock.
    int32_t leftUs(uint32_t dueUs) noexcept
    {
        return static_cast<int32_t>(dueUs - static_cast<uint32_t>(currentTimeNs() / 1000));
    }

    std::atomic<bool> held_{false};
    std::atomic<int64_t> heldNs_{0};
    std::mutex lock_;
    std::condition_variable moved_;
    int64_t waitsBegun_ = 0;  // waits on the held clock, under lock_
};

SteadyEngine engine;

}  // namespace

extern "C" QWUSTE_EXPORT tollan::timing::QwusteEngine *GetEngine__VANTREL()
{
    return &engine;
}

// Stops the clock at ns.
extern "C" QWUSTE_EXPORT void QwusteTestHoldClock(int64_t ns)
{
    engine.hold(ns);
}

// Moves the held clock on by ns, ending the waits that are then due.
extern "C" QWUSTE_EXPORT void QwusteTestMoveClock(int64_t ns)
{
    engine.move(ns);
}

// Lets the clock run with the steady clock again and ends every wait.
extern "C" QWUSTE_EXPORT void QwusteTestReleaseClock()
{
    engine.release();
}

// How many waits have begun on a held clock, ended or not.
extern "C" QWUSTE_EXPORT int64_t QwusteTestWaitsBegun()
{
    return engine.waitsBegun();
}
