#include <tollan/utility.h>

#include <cmath>
#include <cstdint>

int32_t RoundRealToNearestInteger(double x) noexcept
{
    if (!(x >= INT32_MIN && x <= INT32_MAX)) return INT32_MIN;
    // Round half away from zero, then pull an exact half back to the even
    // neighbour.
    int64_t r;
    if (x >= 0) {
        r = static_cast<int64_t>(x + 0.5);
        if (static_cast<double>(r) - x == 0.5 && (r & 1) != 0) --r;
    } else {
        r = static_cast<int64_t>(x - 0.5);
        if (x - static_cast<double>(r) == 0.5 && (r & 1) != 0) ++r;
    }
    return static_cast<int32_t>(r);
}

double TruncateRealNumber(double x) noexcept
{
    return x < 0 ? std::ceil(x) : std::floor(x);
}
