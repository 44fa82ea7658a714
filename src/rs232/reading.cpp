// Reading: counts of bytes, single bytes, and up to a terminator.
#include <algorithm>
#include <cmath>

#include <tollan/rs232.h>

#include "rs232/errors.h"
#include "rs232/port_table.h"
#include "rs232/transfer.h"
#include "timing/milliseconds.h"

namespace tollan::rs232 {
namespace {

constexpr uint32_t kForever = 0xFFFFFFFFu;
constexpr unsigned char kCr = 13;
constexpr unsigned char kLf = 10;

}  // namespace

int32_t checkTransfer(const void *buffer, uint64_t count) noexcept
{
    if (count >= (uint64_t{1} << 31)) return ZOR_RS232_INVALID_COUNT;
    if (buffer == nullptr) return ZOR_RS232_NULL_BUFFER;
    return 0;
}

bool SilenceTimer::expired() noexcept
{
    if (!running_) {
        running_ = true;
        start_ = timing::millisecondClock();
        return false;
    }
    return timeoutMs_ != 0 && timing::millisecondsSince(start_) >= timeoutMs_;
}

uint32_t SilenceTimer::remainingMs() const noexcept
{
    if (timeoutMs_ == 0) return kForever;
    if (!running_) return timeoutMs_;
    const uint32_t elapsed = timing::millisecondsSince(start_);
    return elapsed >= timeoutMs_ ? 0 : timeoutMs_ - elapsed;
}

int32_t ReadPending(ComPort &port, unsigned char *buffer, uint32_t count, uint32_t *got) noexcept
{
    *got = 0;
    if (count == 0) return 0;
    if (port.bytePushedBack) {
        buffer[0] = port.pushedBackByte;
        port.bytePushedBack = false;
        *got = 1;
        ++buffer;
        --count;
        if (count == 0) return 0;
    }
    uint32_t read = 0;
    if (!port.device->read(buffer, count, &read)) {
        // The byte pushed back is delivered all the same; the error ends the call.
        const int32_t error = MapWin32CommError();
        return error != 0 ? error : ZOR_RS232_SYSTEM_ERROR;
    }
    *got += read;
    return 0;
}

int32_t readAtLeast(ComPort &port, unsigned char *buffer, uint32_t enough, uint32_t count, uint32_t timeoutMs,
                    uint32_t *got, FirstPass first) noexcept
{
    SilenceTimer timer(timeoutMs);
    *got = 0;
    // As after a first pass that found nothing (unless a byte pushed back is there).
    if (first == FirstPass::wait && !port.bytePushedBack && !timer.expired())
        port.device->waitReadable(timer.remainingMs());
    while (*got < enough) {
        uint32_t moved = 0;
        const int32_t error = ReadPending(port, buffer + *got, count - *got, &moved);
        *got += moved;
        if (error != 0) return error;
        if (moved > 0) {
            timer.progress();
            continue;
        }
        if (timer.expired()) return ZOR_RS232_TIMEOUT;
        // Nothing yet: sleep until a byte arrives or the time-out runs out.
        port.device->waitReadable(timer.remainingMs());
    }
    return 0;
}

void swallowPartner(ComPort &port, unsigned char terminator) noexcept
{
    // One character lasts (data bits + stop bits + parity bit) / baud seconds, at least 1 ms.
    const double character = std::max(0.001, (port.dataBits + port.stopBits + (port.parity != 0 ? 1 : 0)) /
                                                 static_cast<double>(port.baudRate));
    const auto twoCharactersMs = static_cast<uint32_t>(std::ceil(2.0 * character * 1000.0));
    unsigned char next = 0;
    uint32_t got = 0;
    readWithTimeout(port, &next, 1, twoCharactersMs, &got);
    if (got == 0) return;
    const unsigned char partner = terminator == kCr ? kLf : kCr;
    if ((next & dataBitMask(port)) == partner) return;
    port.bytePushedBack = true;
    port.pushedBackByte = next;
}

namespace {

// The read of a ComRd call whose arguments have been checked.
int32_t readInCall(PortCall &call, unsigned char *buffer, uint32_t enough, uint32_t count, uint32_t *got,
                   FirstPass first) noexcept
{
    ComPort &record = *call.port();
    const int32_t error =
        readAtLeast(record, buffer, enough, count, static_cast<uint32_t>(record.timeoutMs), got, first);
    if (error != 0 && error != ZOR_RS232_TIMEOUT) return call.finish(error);
    // A time-out is no failure of the bytes that came: they are the result.
    call.finish(error);
    return static_cast<int32_t>(*got);
}

}  // namespace

int32_t comRdAtLeast(int32_t port, unsigned char *buffer, uint32_t enough, uint32_t count, uint32_t *got,
                     FirstPass first) noexcept
{
    *got = 0;
    PortCall call(port, "QX_ComRd");
    if (!call) return call.result();
    return readInCall(call, buffer, enough, count, got, first);
}

}  // namespace tollan::rs232

using namespace tollan::rs232;

int32_t ComRd(int32_t port, void *buffer, uint64_t count) noexcept
{
    PortCall call(port, "QX_ComRd");
    if (!call) return call.result();
    if (count == 0) return call.finish(0);
    if (int32_t error = checkTransfer(buffer, count)) return call.finish(error);
    const auto size = static_cast<uint32_t>(count);
    uint32_t got = 0;
    return readInCall(call, static_cast<unsigned char *>(buffer), size, size, &got, FirstPass::take);
}

int32_t ComRdByte(int32_t port) noexcept
{
    unsigned char byte = 0;
    if (ComRd(port, &byte, 1) == 1) return byte;
    return threadError();
}

int32_t ComRdTerm(int32_t port, void *buffer, uint64_t count, int32_t terminator) noexcept
{
    PortCall call(port, "QX_ComRdTerm");
    if (!call) return call.result();
    if (count == 0) return call.finish(0);
    if (int32_t error = checkTransfer(buffer, count)) return call.finish(error);
    ComPort &record = *call.port();
    const unsigned char mask = dataBitMask(record);
    const auto wanted = static_cast<unsigned char>(terminator & mask);
    auto *bytes = static_cast<unsigned char *>(buffer);
    SilenceTimer timer(static_cast<uint32_t>(record.timeoutMs));
    uint32_t stored = 0;
    // Compared also after a pass that brought nothing: a terminator whose
    // masked value is 0 ends the call at once when nothing waits.
    unsigned char last = 0;
    bool found = false;
    int32_t result = 0;
    while (stored < count) {
        unsigned char byte = 0;
        uint32_t got = 0;
        if (int32_t error = ReadPending(record, &byte, 1, &got)) {
            result = error;
            break;
        }
        if (got == 1) {
            timer.progress();
            last = static_cast<unsigned char>(byte & mask);
            found = last == wanted;
            if (found) break;
            bytes[stored++] = byte;
            continue;
        }
        if (last == wanted) break;
        if (timer.expired()) {
            result = ZOR_RS232_TIMEOUT;
            break;
        }
        record.device->waitReadable(timer.remainingMs());
    }
    if (found && (wanted == 13 || wanted == 10)) swallowPartner(record, wanted);
    if (result != 0 && result != ZOR_RS232_TIMEOUT) return call.finish(result);
    call.finish(result);
    return static_cast<int32_t>(stored);
}
