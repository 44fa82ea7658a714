// A small external timing engine for the tests: the steady clock, a tick
// value of one microsecond and sleeping waits. Loaded at run time as
// "qwuste.dll" (libqwuste.so).
#include <chrono>
#include <thread>

#include "timing/qwuste_engine.h"

#if defined(_WIN32)
#define QWUSTE_EXPORT __declspec(dllexport)
#else
#define QWUSTE_EXPORT __attribute__((visibility("default")))
#endif

namespace {

using tollan::timing::QwusteTick;

class SteadyEngine final : public tollan::timing::QwusteEngine {
public:
    int64_t currentTimeNs() noexcept override
    {
        return std::chrono::duration_cast<std::chrono::nanoseconds>(
                   std::chrono::steady_clock::now().time_since_epoch())
            .count();
    }

    QwusteTick tickValue() noexcept override { return QwusteTick{0, 1000000}; }

    void waitUntil(uint32_t dueUs) noexcept override
    {
        const auto nowUs = static_cast<uint32_t>(currentTimeNs() / 1000);
        const auto leftUs = static_cast<int32_t>(dueUs - nowUs);
        if (leftUs > 0) std::this_thread::sleep_for(std::chrono::microseconds(leftUs));
    }
};

SteadyEngine engine;

}  // namespace

extern "C" QWUSTE_EXPORT tollan::timing::QwusteEngine *GetEngine__VANTREL()
{
    return &engine;
}
