// The scanf engine's shared vocabulary: one conversion of a format as
// parsed and how a directive ended.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tollan::stdc {

// The size part of a conversion (see scanf_engine.h for which conversions
// take which).
enum class ScanSize : uint8_t {
    normal,
    hh,
    h,
    l,
    ll,
    j,
    z,
    t,
    L,
    I32,
    I64,
    I,  // pointer-sized
};

// No width given: the field runs as far as its form does.
inline constexpr size_t kNoWidth = SIZE_MAX;

struct ScanConversion {
    bool suppress;  // '*': read the field, store nothing, take no argument
    size_t width;   // bytes at most, or kNoWidth
    ScanSize size;
    char type;  // the conversion character
    // For '[': the members between '[' (after a '^') and the closing ']'.
    const char *setBegin;
    const char *setEnd;
    bool setNegated;
};

// The arguments of the format (scanf_arguments.h).
class ScanArguments;

enum class ScanOutcome {
    done,             // the conversion completed (stored unless suppressed)
    matchingFailure,  // the input does not fit the conversion
    inputFailure,     // the source ended before the field had a byte
};

}  // namespace tollan::stdc
