// Elements of the arrays that Fmt reads and Scan fills: where each lies and
// how its bytes become a value. Elements are copied byte-wise, so a z item's
// elements need no alignment in the caller's byte buffer.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "fmtio/fmt_conversion.h"

namespace tollan::fmtio {

static_assert(std::endian::native == std::endian::little, "elements are read as little-endian values");

// The address of element k of the item's parameter at base: the i offset
// counts elements, or bytes for a z item.
inline const char *elementAt(const void *base, const Conversion &conversion, uint32_t k) noexcept
{
    const auto size = static_cast<uint64_t>(conversion.item->size);
    const auto offset = static_cast<uint64_t>(conversion.offset);
    return static_cast<const char *>(base) + (conversion.item->zFlag ? offset : offset * size) + k * size;
}

inline uint64_t loadInteger(const char *at, int64_t size) noexcept
{
    uint64_t bits = 0;
    std::memcpy(&bits, at, static_cast<size_t>(size > 8 ? 8 : size));
    return bits;
}

inline void storeInteger(char *at, int64_t size, uint64_t bits) noexcept
{
    std::memcpy(at, &bits, static_cast<size_t>(size > 8 ? 8 : size));
}

inline double loadReal(const char *at, int64_t size) noexcept
{
    if (size == 4) {
        float narrow;
        std::memcpy(&narrow, at, sizeof narrow);
        return narrow;
    }
    double wide;
    std::memcpy(&wide, at, sizeof wide);
    return wide;
}

inline void storeReal(char *at, int64_t size, double value) noexcept
{
    if (size == 4) {
        const auto narrow = static_cast<float>(value);
        std::memcpy(at, &narrow, sizeof narrow);
        return;
    }
    std::memcpy(at, &value, sizeof value);
}

}  // namespace tollan::fmtio
