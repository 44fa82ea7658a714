// What the transfer calls share: the checks of their arguments, reading what
// has arrived, and the silence timer.
#pragma once

#include <cstdint>

#include "rs232/com_port.h"

namespace tollan::rs232 {

// 0 when a transfer may go ahead: -94 for a count of 2^31 or more, -152 for
// a null buffer.
int32_t checkTransfer(const void *buffer, uint64_t count) noexcept;

// Takes at most `count` bytes that have arrived (a byte pushed back comes
// first), without waiting. 0 or a library code.
int32_t ReadPending(ComPort &port, unsigned char *buffer, uint32_t count, uint32_t *got) noexcept;

// The port's silence time-out: it runs from the first pass that moved
// nothing after the last progress, and restarts when bytes move. 0 means
// no limit.
class SilenceTimer {
public:
    explicit SilenceTimer(uint32_t timeoutMs) noexcept : timeoutMs_(timeoutMs) {}
    void progress() noexcept { running_ = false; }
    // A pass that moved nothing: true when the time-out has run out.
    bool expired() noexcept;
    // What a wait may last before the time-out runs out (0xFFFFFFFF: no limit).
    uint32_t remainingMs() const noexcept;

private:
    uint32_t timeoutMs_;
    bool running_ = false;
    uint32_t start_ = 0;
};

// How a read begins: by taking what has arrived, or, when bytes are known
// to be on their way only (an answer just asked for), by waiting for them,
// which spares a read that would find nothing.
enum class FirstPass { take, wait };

// Reads at least `enough` and at most `count` bytes with a silence time-out
// (the wait between two passes blocks until bytes arrive); every pass asks
// for all that `count` still has room for. *got: bytes read, also on
// failure. 0, -99 (time-out) or another code.
int32_t readAtLeast(ComPort &port, unsigned char *buffer, uint32_t enough, uint32_t count, uint32_t timeoutMs,
                    uint32_t *got, FirstPass first = FirstPass::take) noexcept;
// Reads `count` bytes with a silence time-out, as readAtLeast.
inline int32_t readWithTimeout(ComPort &port, unsigned char *buffer, uint32_t count, uint32_t timeoutMs,
                               uint32_t *got) noexcept
{
    return readAtLeast(port, buffer, count, count, timeoutMs, got);
}

// ComRd taking at least `enough` of the `count` bytes (0 < enough <= count
// < 2^31), with the port's time-out, in the frame of a ComRd call (its last
// error and log). Returns what ComRd returns; *got: bytes read, also when a
// failure of the line ends the call.
int32_t comRdAtLeast(int32_t port, unsigned char *buffer, uint32_t enough, uint32_t count, uint32_t *got,
                     FirstPass first = FirstPass::take) noexcept;

// After a CR or LF terminator: the byte that follows within two character
// times is swallowed when it is the partner (LF after CR, CR after LF) and
// kept for the next read otherwise.
void swallowPartner(ComPort &port, unsigned char terminator) noexcept;

}  // namespace tollan::rs232
