// Byte buffers addressed as base pointer plus starting index.
#include <algorithm>
#include <cstring>

#include <tollan/fmtio.h>

#include "fmtio/case_fold.h"

using tollan::fmtio::orderIgnoringCase;
using tollan::fmtio::sameIgnoringCase;

namespace {

constexpr int64_t kLargestRange = 0xFFFFFFFFLL;

const char *at(const void *base, uint32_t index) noexcept
{
    return static_cast<const char *>(base) + index;
}

bool matchesAt(const char *where, const char *pattern, size_t patternLength, bool caseSensitive) noexcept
{
    if (caseSensitive) return std::memcmp(where, pattern, patternLength) == 0;
    for (size_t i = 0; i < patternLength; ++i) {
        if (!sameIgnoringCase(where[i], pattern[i])) return false;
    }
    return true;
}

}  // namespace

int32_t CompareBytes(const void *buffer1, uint32_t index1, const void *buffer2, uint32_t index2,
                     int64_t count, int32_t caseSensitive) noexcept
{
    if (count <= 0) return 0;
    const char *first = at(buffer1, index1);
    const char *second = at(buffer2, index2);
    const size_t length = static_cast<size_t>(count);
    if (caseSensitive) return tollan::fmtio::signOf(std::memcmp(first, second, length));
    for (size_t i = 0; i < length; ++i) {
        if (!sameIgnoringCase(first[i], second[i])) return orderIgnoringCase(first[i], second[i]);
    }
    return 0;
}

void CopyBytes(void *target, uint32_t targetIndex, const void *source, uint32_t sourceIndex,
               int64_t count) noexcept
{
    // A target inside the source range is copied from the back; memmove
    // chooses the safe direction in exactly that way.
    if (count > 0)
        std::memmove(static_cast<char *>(target) + targetIndex, at(source, sourceIndex),
                     static_cast<size_t>(count));
}

void FillBytes(void *buffer, uint32_t index, int64_t count, int32_t value) noexcept
{
    if (count > 0) std::memset(static_cast<char *>(buffer) + index, value & 0xFF, static_cast<size_t>(count));
}

int32_t FindPattern(const char *buffer, uint32_t startIndex, int64_t numberOfBytes, const char *pattern,
                    int32_t caseSensitive, int32_t fromRight) noexcept
{
    if (numberOfBytes < -1 || numberOfBytes > kLargestRange || buffer == nullptr || pattern == nullptr)
        return -1;
    const char *range = buffer + startIndex;
    const size_t length = numberOfBytes == -1 ? std::min<size_t>(std::strlen(range), kLargestRange)
                                              : static_cast<size_t>(numberOfBytes);
    const size_t patternLength = std::strlen(pattern);
    if (patternLength == 0 || patternLength > length) return -1;

    const size_t last = length - patternLength;
    size_t position = fromRight ? last : 0;
    for (;;) {
        if (matchesAt(range + position, pattern, patternLength, caseSensitive != 0)) {
            const int64_t index = int64_t{startIndex} + static_cast<int64_t>(position);
            return index <= INT32_MAX ? static_cast<int32_t>(index) : -1;
        }
        if (fromRight ? position == 0 : position == last) return -1;
        if (fromRight)
            --position;
        else
            ++position;
    }
}
