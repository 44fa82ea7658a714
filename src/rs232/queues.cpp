// Queues, line status, connection state and break.
#include <tollan/rs232.h>

#include <mutex>

#include "platform/serial.h"
#include "platform/thread.h"
#include "rs232/errors.h"
#include "rs232/port_table.h"
#include "rs232/writing_thread.h"
#include "timing/milliseconds.h"

namespace tollan::rs232 {
namespace {

constexpr uint32_t kDefaultBreakMs = 250;
// The serial driver's connection-state request (serial-port device type,
// function 4082, buffered); the answer's second word is the state.
constexpr uint32_t kConnectionStateRequest = 0x001B3FC8;

// The driver's error and flag bits as the library's status bits.
uint32_t statusBits(const platform::SerialStatus &status) noexcept
{
    uint32_t bits = 0;
    if (status.errors & 0x1) bits |= ZOR_COM_RECEIVE_OVERFLOW;
    if (status.errors & 0x4) bits |= ZOR_COM_PARITY_ERROR;
    if (status.errors & 0x2) bits |= ZOR_COM_OVERRUN;
    if (status.errors & 0x8) bits |= ZOR_COM_FRAMING_ERROR;
    if (status.errors & 0x10) bits |= ZOR_COM_BREAK;
    if (status.holdByXoff) bits |= ZOR_COM_HELD_BY_XOFF;
    if (status.xoffSent) bits |= ZOR_COM_XOFF_SENT;
    return bits;
}

// A status query folded into the port's accumulated status.
bool queryStatus(ComPort &port, platform::SerialStatus *status) noexcept
{
    *status = platform::SerialStatus{};
    if (!port.device->status(status)) return false;
    port.accumulatedStatus |= statusBits(*status);
    return true;
}

}  // namespace
}  // namespace tollan::rs232

using namespace tollan::rs232;

int32_t FlushInQ(int32_t port) noexcept
{
    PortCall call(port, "QX_FlushInQ");
    if (!call) return call.result();
    ComPort &record = *call.port();
    if (!record.device->purge(tollan::platform::kPurgeReceiveAbort | tollan::platform::kPurgeReceiveClear))
        return call.finish(ZOR_RS232_SYSTEM_ERROR);
    record.bytePushedBack = false;
    record.lastInputLength = 0;
    return call.finish(0);
}

int32_t FlushOutQ(int32_t port) noexcept
{
    PortCall call(port, "QX_FlushOutQ");
    if (!call) return call.result();
    return call.finish(FlushAndAbortTransfer(*call.port(), false) ? 0 : ZOR_RS232_SYSTEM_ERROR);
}

int32_t GetInQLen(int32_t port) noexcept
{
    PortCall call(port, "QX_GetInQLen");
    if (!call) return call.result();
    ComPort &record = *call.port();
    tollan::platform::SerialStatus status;
    if (!queryStatus(record, &status)) return call.finish(MapWin32CommError());
    record.lastInputLength = status.inQueue + (record.bytePushedBack ? 1 : 0);
    call.finish(0);
    return static_cast<int32_t>(record.lastInputLength);
}

int32_t GetOutQLen(int32_t port) noexcept
{
    PortCall call(port, "QX_GetOutQLen");
    if (!call) return call.result();
    ComPort &record = *call.port();
    if (const int32_t deferred = takeDeferredError(record)) return call.finish(deferred);
    uint32_t waiting = 0;
    {
        std::lock_guard hold(record.writeThread.lock);
        waiting = record.writeThread.bytesInQ;
    }
    call.finish(0);
    return static_cast<int32_t>(waiting);
}

int32_t GetComStat(int32_t port) noexcept
{
    PortCall call(port, "QX_GetComStat");
    if (!call) return call.result();
    ComPort &record = *call.port();
    const uint32_t gathered = record.accumulatedStatus;
    record.accumulatedStatus = 0;
    tollan::platform::SerialStatus status;
    uint32_t now = 0;
    if (record.device->status(&status)) now = statusBits(status);
    if (const int32_t deferred = takeDeferredError(record)) return call.finish(deferred);
    call.finish(0);
    return static_cast<int32_t>(gathered | now);
}

int32_t GetComLineStatus(int32_t port) noexcept
{
    PortCall call(port, "QX_GetComLineStatus");
    // Never negative: a bad or closed port, or a failing query, gives 0.
    if (!call) return 0;
    uint32_t bits = 0;
    if (!call.port()->device->modemStatus(&bits)) {
        call.finish(ZOR_RS232_IO_ERROR);
        return 0;
    }
    call.finish(0);
    return static_cast<int32_t>(bits & (ZOR_COM_CTS | ZOR_COM_DSR | ZOR_COM_RING | ZOR_COM_CARRIER));
}

int32_t GetComConnectionState(int32_t port) noexcept
{
    PortCall call(port, "QX_GetComConnectionState");
    if (!call) return call.result();
    ComPort &record = *call.port();
    uint32_t answer[2] = {0, 0};
    if (!record.device->driverRequest(kConnectionStateRequest, nullptr, 0, answer, sizeof answer))
        return call.finish(ZOR_RS232_SYSTEM_ERROR);
    if (const int32_t deferred = takeDeferredError(record)) return call.finish(deferred);
    call.finish(0);
    return static_cast<int32_t>(answer[1]);
}

int32_t ComBreak(int32_t port, int32_t milliseconds) noexcept
{
    PortCall call(port, "QX_ComBreak");
    if (!call) return call.result();
    if (milliseconds < 0) return call.finish(ZOR_RS232_INVALID_BREAK_TIME);
    ComPort &record = *call.port();
    const uint32_t hold = milliseconds == 0 ? kDefaultBreakMs : static_cast<uint32_t>(milliseconds);
    if (!record.device->setBreak(true)) return call.finish(ZOR_RS232_GENERAL_IO_ERROR);
    // The break lasts its time on the millisecond clock; the thread sleeps meanwhile.
    const uint32_t start = tollan::timing::millisecondClock();
    for (uint32_t elapsed = 0; elapsed < hold; elapsed = tollan::timing::millisecondsSince(start))
        tollan::platform::sleepMs(hold - elapsed);
    if (!record.device->setBreak(false)) return call.finish(ZOR_RS232_GENERAL_IO_ERROR);
    return call.finish(0);
}
