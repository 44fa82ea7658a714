// The configuration calls: time-out, flow control, escapes, and the settings
// the device holds.
#include "rs232/settings.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <tollan/rs232.h>

#include "rs232/errors.h"
#include "rs232/open_close.h"
#include "rs232/port_table.h"

namespace tollan::rs232 {
namespace {

constexpr uint32_t kEscapeSetXoff = 1;
constexpr uint32_t kEscapeSetXon = 2;
constexpr uint32_t kEscapeSetRts = 3;
constexpr uint32_t kEscapeClearRts = 4;
constexpr uint32_t kEscapeSetDtr = 5;
constexpr uint32_t kEscapeClearDtr = 6;
constexpr uint32_t kEscapeClearBreak = 9;
constexpr uint32_t kFirstDriverEscape = 128;
constexpr uint32_t kLastDriverEscape = 131;
// The serial driver's request for escapes 128 to 131 (serial-port device
// type, function 37, buffered).
constexpr uint32_t kDriverEscapeRequest = 0x001B0094;

// Whether an escape code may go to the device with the port's modes.
bool escapeAllowed(const ComPort &port, uint32_t code) noexcept
{
    switch (code) {
        case kEscapeSetXoff:
        case kEscapeSetXon:
            return port.xonXoffMode;
        case kEscapeSetRts:
        case kEscapeClearRts:
            return !port.ctsMode;
        case kEscapeSetDtr:
        case kEscapeClearDtr:
            return port.dtrMode != 2;
        case kEscapeClearBreak:
            return true;
        default:
            return false;
    }
}

}  // namespace

int32_t ApplyPortSettings(ComPort &port) noexcept
{
    tollan::platform::SerialSettings settings;
    settings.baudRate = port.baudRate;
    settings.parityCheck = port.parity == 1 || port.parity == 2;
    settings.ctsOutputFlow = port.ctsMode;
    settings.dtrControl = port.dtrMode == 2 ? 2 : 1;
    settings.rtsControl = port.ctsMode ? 2 : 1;
    settings.xonXoffOutput = port.xonXoffMode;
    settings.xonXoffInput = port.xonXoffMode;
    const auto limit = static_cast<uint16_t>(std::min(port.inputQueueSize / 10, 4096));
    settings.xonLimit = limit;
    settings.xoffLimit = limit;
    settings.dataBits = port.dataBits;
    settings.parity = port.parity;
    settings.stopBits = port.stopBits == 1 ? 1 : 2;
    const bool applied =
        port.device != nullptr && port.device->apply(&settings, static_cast<uint32_t>(port.inputQueueSize),
                                                     static_cast<uint32_t>(port.outputQueueSize));
    if (applied) return 0;
    logFailure(ZOR_RS232_INTERNAL_ERROR, "ApplyPortSettings");
    return ZOR_RS232_INTERNAL_ERROR;
}

int32_t ApplyWriteTimeout(ComPort &port, uint32_t ms) noexcept
{
    return port.device != nullptr && port.device->setWriteTimeout(ms) ? 0 : ZOR_RS232_SYSTEM_ERROR;
}

}  // namespace tollan::rs232

using namespace tollan::rs232;

int32_t SetComTime(int32_t port, double seconds) noexcept
{
    PortCall call(port, "QX_SetComTime");
    if (!call) return call.result();
    // Also NaN: neither a time-out nor "no limit".
    if (!(seconds >= 0.0)) return call.finish(ZOR_RS232_INVALID_PARAMETER);
    const double ms = std::trunc(seconds * 1000.0);
    call.port()->timeoutMs = ms >= 2147483647.0 ? 2147483647 : static_cast<int32_t>(ms);
    return call.finish(0);
}

int32_t SetXMode(int32_t port, int32_t mode) noexcept
{
    PortCall call(port, "QX_SetXMode");
    if (!call) return call.result();
    ComPort &record = *call.port();
    const bool wanted = mode != 0;
    if (record.xonXoffMode == wanted) return call.finish(0);
    record.xonXoffMode = wanted;
    return call.finish(ApplyPortSettings(record));
}

int32_t SetCTSMode(int32_t port, uint32_t mode) noexcept
{
    PortCall call(port, "QX_SetCTSMode");
    if (!call) return call.result();
    if (mode > 2) return call.finish(ZOR_RS232_INVALID_PARAMETER);
    ComPort &record = *call.port();
    const bool cts = mode != 0;
    const uint8_t dtr = mode == 1 ? 2 : 1;
    if (record.ctsMode == cts && record.dtrMode == dtr) return call.finish(0);
    record.ctsMode = cts;
    record.dtrMode = dtr;
    return call.finish(ApplyPortSettings(record));
}

int32_t ComSetEscape(int32_t port, uint32_t code) noexcept
{
    PortCall call(port, "QX_ComSetEscape");
    if (!call) return call.result();
    ComPort &record = *call.port();
    if (code >= kFirstDriverEscape && code <= kLastDriverEscape) {
        uint32_t answer = 0;
        const bool done =
            record.device->driverRequest(kDriverEscapeRequest, &code, sizeof code, &answer, sizeof answer);
        return call.finish(done ? 0 : ZOR_RS232_SYSTEM_ERROR);
    }
    if (!escapeAllowed(record, code)) return call.finish(ZOR_RS232_INVALID_PARAMETER);
    return call.finish(record.device->escape(code) ? 0 : ZOR_RS232_SYSTEM_ERROR);
}

int32_t GetSystemComHandle(int32_t port, intptr_t *handle) noexcept
{
    if (handle == nullptr) {
        SetRS232Err(ZOR_RS232_NULL_POINTER);
        logFailure(ZOR_RS232_NULL_POINTER, "QX_GetSystemComHandle");
        return ZOR_RS232_NULL_POINTER;
    }
    PortCall call(port, "QX_GetSystemComHandle");
    if (!call) return call.result();
    *handle = call.port()->device->systemHandle();
    return call.finish(0);
}

int32_t __GetComConfig(int32_t port, int32_t *baudRate, int32_t *parity, int32_t *dataBits, int32_t *stopBits,
                       int32_t *inputQueueSize, int32_t *outputQueueSize) noexcept
{
    PortCall call(port, "QX_GetComConfig");
    if (!call) return call.result();
    // A failing query is not noticed: the values last held are handed out.
    tollan::platform::SerialSettings settings;
    settings.baudRate = call.port()->baudRate;
    settings.parity = call.port()->parity;
    settings.dataBits = call.port()->dataBits;
    settings.stopBits = call.port()->stopBits;
    uint32_t in = static_cast<uint32_t>(call.port()->inputQueueSize);
    uint32_t out = static_cast<uint32_t>(call.port()->outputQueueSize);
    const bool queues = inputQueueSize != nullptr || outputQueueSize != nullptr;
    call.port()->device->query(&settings, queues ? &in : nullptr, queues ? &out : nullptr);
    if (baudRate != nullptr) *baudRate = settings.baudRate;
    if (parity != nullptr) *parity = settings.parity;
    if (dataBits != nullptr) *dataBits = settings.dataBits;
    if (stopBits != nullptr) *stopBits = settings.stopBits == 2 ? 2 : 1;
    if (inputQueueSize != nullptr) *inputQueueSize = static_cast<int32_t>(in);
    if (outputQueueSize != nullptr) *outputQueueSize = static_cast<int32_t>(out);
    return call.finish(0);
}

int32_t __GetPortDefaults(const char *deviceName, int32_t *baudRate, int32_t *parity, int32_t *dataBits,
                          int32_t *stopBits, int32_t *xonXoffMode, int32_t *ctsMode,
                          unsigned char *found) noexcept
{
    if (found != nullptr) *found = 1;
    tollan::platform::SerialSettings settings;
    bool empty = false;
    if (deviceName == nullptr || !tollan::platform::serialPortDefaults(deviceName, &settings, &empty)) {
        SetRS232Err(ZOR_RS232_INTERNAL_ERROR);
        logFailure(ZOR_RS232_INTERNAL_ERROR, "GetPortDefaults");
        return ZOR_RS232_INTERNAL_ERROR;
    }
    if (empty) settings = tollan::platform::SerialSettings{};
    if (baudRate != nullptr) *baudRate = settings.baudRate;
    if (parity != nullptr) *parity = settings.parity;
    if (dataBits != nullptr) *dataBits = settings.dataBits;
    if (stopBits != nullptr) *stopBits = settings.stopBits == 2 ? 2 : 1;
    if (xonXoffMode != nullptr) *xonXoffMode = settings.xonXoffOutput && settings.xonXoffInput ? 1 : 0;
    if (ctsMode != nullptr) *ctsMode = settings.ctsOutputFlow ? 1 : 0;
    return SetRS232Err(0);
}
