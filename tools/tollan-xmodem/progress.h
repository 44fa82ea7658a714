// The progress line on a terminal: packets, bytes, rate and repeated
// packets so far, rewritten in place at most ten times a second and ended
// with a newline when the transfer is over.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>

#include <tollan/export.h>

namespace tollan::xmodem_tool {

class ProgressLine {
public:
    // A line that shows nothing when `shown` is false.
    ProgressLine(std::FILE *terminal, bool shown) : terminal_(terminal), shown_(shown) {}

    // What the line says until the first packet ("waiting for the receiver").
    void waiting(const char *text);
    // A packet was acknowledged.
    void update(int32_t packets, int64_t bytes, int32_t retries);
    // The last values, then the newline, if anything was shown.
    void finish();

private:
    using Clock = std::chrono::steady_clock;

    void draw();
    void put(const char *format, ...) TOLLAN_PRINTF(2, 3);

    std::FILE *terminal_;
    bool shown_;
    int32_t packets_ = 0;
    int64_t bytes_ = 0;
    int32_t retries_ = 0;
    // The rate counts from the first packet on, so that the wait for the
    // other end at the start does not lower it.
    Clock::time_point first_{};
    int64_t firstBytes_ = 0;
    Clock::time_point drawn_{};
    bool everDrawn_ = false;
    int width_ = 0;
};

}  // namespace tollan::xmodem_tool
