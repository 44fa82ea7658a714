// The bytes a Scan call reads from, and what its converters report.
#pragma once

#include <cstdint>

namespace tollan::fmtio {

// The unread part of the source: at..end.
struct ScanText {
    const char *at;
    const char *end;
};

// A converter returns 0 when it converted, kSourceEnded when nothing but white
// space was left for it (the Scan stops there, without an error), or the
// message number of its failure.
inline constexpr int32_t kSourceEnded = -1;

inline bool isScanSpace(char c) noexcept
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// The field of a number: the next width bytes, or the rest of the source.
inline const char *fieldEnd(const ScanText &text, int64_t width) noexcept
{
    return width < text.end - text.at ? text.at + width : text.end;
}

}  // namespace tollan::fmtio
