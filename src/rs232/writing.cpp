// Writing: through the writing thread's queue, or straight to the device in
// synchronous mode.
#include <tollan/rs232.h>

#include "rs232/errors.h"
#include "rs232/port_table.h"
#include "rs232/transfer.h"
#include "rs232/writing_thread.h"

namespace tollan::rs232 {

// Writes with the port's silence time-out; *taken: bytes queued or written.
// 0, -99 or the device's failure. A full queue is waited on, not polled.
int32_t writeWithTimeout(ComPort &port, const unsigned char *bytes, uint32_t count, uint32_t *taken) noexcept
{
    WriteThread &writer = port.writeThread;
    SilenceTimer timer(static_cast<uint32_t>(port.timeoutMs));
    *taken = 0;
    while (*taken < count) {
        // The port is closing: nothing more goes anywhere.
        if (writer.stop.load()) return 0;
        const uint32_t rest = count - *taken;
        int32_t error = 0;
        const uint32_t moved =
            writer.synchronous ? WriteChunk(port, bytes + *taken, rest, static_cast<uint32_t>(port.timeoutMs))
                               : WriteOrQueue(port, rest, bytes + *taken, timer.remainingMs(), &error);
        *taken += moved;
        if (error != 0) return error;
        if (moved > 0) {
            timer.progress();
            continue;
        }
        if (timer.expired()) {
            writer.queueWasFull = false;
            return ZOR_RS232_TIMEOUT;
        }
        if (!writer.synchronous) waitForQueueSpace(port, count - *taken, timer.remainingMs());
    }
    return 0;
}

}  // namespace tollan::rs232

using namespace tollan::rs232;

int32_t ComWrt(int32_t port, const void *buffer, uint64_t count) noexcept
{
    PortCall call(port, "QX_ComWrt");
    if (!call) return call.result();
    if (count == 0) return call.finish(0);
    if (int32_t error = checkTransfer(buffer, count)) return call.finish(error);
    ComPort &record = *call.port();
    uint32_t taken = 0;
    int32_t status = writeWithTimeout(record, static_cast<const unsigned char *>(buffer),
                                      static_cast<uint32_t>(count), &taken);
    // An error the writing thread met replaces a success or a time-out.
    if (const int32_t deferred = takeDeferredError(record)) return call.finish(deferred);
    call.finish(status);
    return static_cast<int32_t>(taken);
}

int32_t ComWrtByte(int32_t port, int32_t byte) noexcept
{
    const auto value = static_cast<unsigned char>(byte);
    const int32_t result = ComWrt(port, &value, 1);
    return result < 0 ? result : (result == 1 ? 1 : 0);
}
