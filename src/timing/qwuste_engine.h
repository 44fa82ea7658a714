// The object that the external timing engine ("qwuste.dll", "libqwuste.so")
// hands out from its entry "GetEngine__VANTREL". Both sides are built with
// the same compiler, so the object is called through its virtual table.
#pragma once

#include <cstdint>

namespace tollan::timing {

// A tick value: seconds and nanoseconds, seconds x 10^9 + nanoseconds in all.
struct QwusteTick {
    uint32_t seconds;
    uint32_t nanoseconds;
};

class QwusteEngine {
public:
    // The engine's clock in nanoseconds. Its microseconds, truncated to 32
    // bits, are the clock that waitUntil works with.
    virtual int64_t currentTimeNs() noexcept = 0;
    // The engine's tick value; its resolution is 1 / (seconds x 10^9 +
    // nanoseconds) seconds, never finer than a microsecond.
    virtual QwusteTick tickValue() noexcept = 0;
    // Waits until the engine's 32-bit microsecond clock reaches dueUs
    // (compared across the clock's wrap); returns at once when it has.
    virtual void waitUntil(uint32_t dueUs) noexcept = 0;

protected:
    ~QwusteEngine() = default;  // the engine library owns the object
};

// The signature of the "GetEngine__VANTREL" entry.
using GetQwusteEngine = QwusteEngine *(*)();

}  // namespace tollan::timing
