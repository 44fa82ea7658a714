// The "[TIME]" text, "HH:MM:SS.mmm" of the local time. Converting to local
// time is the dear part, so the "HH:MM:SS." of the current second is kept
// and only the milliseconds are written afresh. Not thread-safe: the logger
// lock guards it.
#pragma once

#include <cstdint>

#include "logger/line_buffer.h"

namespace tollan::logger {

class TimeStamp {
public:
    // Appends the time of now; nothing when the local time cannot be had.
    void append(LineBuffer &out) noexcept;

private:
    static constexpr int64_t kNoSecond = INT64_MIN;
    int64_t second_ = kNoSecond;  // the second that clock_ shows
    char clock_[9] = {};          // "HH:MM:SS."
};

}  // namespace tollan::logger
