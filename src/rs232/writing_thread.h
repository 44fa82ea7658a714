// The writing thread of a port: it drains the queue that ComWrt fills, in
// chunks whose writes end well before the port's time-out, so that a flush
// or a close is never held up for long.
#pragma once

#include <cstdint>

#include "rs232/com_port.h"

namespace tollan::rs232 {

// Sets up the queue and starts the thread (none in synchronous mode). 0, or
// -1 (already set up), -11 (no queue), -12 (no event or thread), -5 (the
// caller's priority cannot be given to it).
int32_t SetUpWritingThread(ComPort &port) noexcept;
// Stops the thread and waits for it to end, dropping what is still queued.
void ShutDownWritingThread(ComPort &port) noexcept;
// Drops what is queued and aborts the write in progress (and, with
// receiveToo, what was received). False when the device refused the purge.
bool FlushAndAbortTransfer(ComPort &port, bool receiveToo) noexcept;

// Queues up to count bytes; returns how many were taken (0 when the queue is full).
uint32_t QueueSomeBytes(ComPort &port, uint32_t count, const unsigned char *bytes) noexcept;
// Takes up to count bytes for the writing thread. When nothing is queued or
// being written, they go to the device directly: what it takes at once when
// the rest fits the queue, or else what does not fit the queue, waiting at
// most waitMs for the device (so a long write does not pass through the
// queue piece by piece). The rest is queued. Returns how many were taken;
// *error: a failure of the device.
uint32_t WriteOrQueue(ComPort &port, uint32_t count, const unsigned char *bytes, uint32_t waitMs,
                      int32_t *error) noexcept;
// Writes bytes to the device with the given write time-out (synchronous mode
// and the writing thread); returns how many were written. A failure other
// than an aborted write becomes the port's deferred error.
uint32_t WriteChunk(ComPort &port, const unsigned char *bytes, uint32_t count,
                    uint32_t writeTimeoutMs) noexcept;
// Waits until the writing thread has made room in the queue for `wanted`
// bytes (at most half the queue is waited for, so that the thread never runs
// dry), for at most `ms`. Room made for less may go unnoticed until then.
void waitForQueueSpace(ComPort &port, uint32_t wanted, uint32_t ms) noexcept;
// Takes (and clears) the port's deferred error: 0 when there is none.
int32_t takeDeferredError(ComPort &port) noexcept;

}  // namespace tollan::rs232
