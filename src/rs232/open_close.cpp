// OpenCom, OpenComConfig and CloseCom, and the steps they are made of.
#include "rs232/open_close.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include <tollan/debugger.h>
#include <tollan/rs232.h>

#include "rs232/errors.h"
#include "rs232/port_table.h"
#include "rs232/settings.h"
#include "rs232/writing_thread.h"
#include "services/lifecycle.h"

namespace tollan::rs232 {
namespace {

constexpr size_t kMaxName = 250;
constexpr int32_t kNoNameCopy = -102;  // not in the table: its text is "Unknown error number"
constexpr int32_t kSmallestQueue = 30;

// A queue size as an open takes it: 0 becomes 512, 1 to 29 become 30.
int32_t queueSize(int32_t requested) noexcept
{
    if (requested == 0) return kDefaultQueueSize;
    return requested < kSmallestQueue ? kSmallestQueue : requested;
}

// An odd positive queue size, raised to the next even one on a system whose
// version was detected (2147483647 becomes 2147483646).
int32_t evenQueueSize(int32_t size) noexcept
{
    if (size <= 0 || size % 2 == 0) return size;
    return size == INT32_MAX ? INT32_MAX - 1 : size + 1;
}

int32_t mapOpenError() noexcept
{
    switch (platform::lastSerialError()) {
        case platform::kSerialFileNotFound:
        case platform::kSerialInvalidName:
            return ZOR_RS232_NO_PORT;
        case platform::kSerialNoMemory:
        case 14:
            return ZOR_RS232_NO_RESOURCES;
        default:
            return ZOR_RS232_CANNOT_OPEN;
    }
}

struct OpenRequest {
    const char *deviceName;
    int32_t baud;
    int32_t parity;
    int32_t dataBits;
    int32_t stopBits;
    int32_t inputQueueSize;
    int32_t outputQueueSize;
    bool useDefaults;
};

// Steps 3 to 11 of an open, under the port's lock; the caller undoes a failure.
int32_t openLocked(ComPort &port, const OpenRequest &request, bool *deviceOpened) noexcept
{
    char path[kMaxName + 16];
    BuildDeviceName(port.number, request.deviceName, path, sizeof path);
    if (port.open) CloseCom(port.number);

    port.device = platform::SerialPort::open(path);
    if (port.device == nullptr) return mapOpenError();
    *deviceOpened = true;
    const size_t length = std::strlen(path);
    port.deviceName.reset(new (std::nothrow) char[length + 1]);
    if (port.deviceName == nullptr) return kNoNameCopy;
    std::memcpy(port.deviceName.get(), path, length + 1);

    int32_t baud = request.baud;
    int32_t parity = request.parity;
    int32_t dataBits = request.dataBits;
    int32_t stopBits = request.stopBits;
    int32_t inputQueue = request.inputQueueSize;
    int32_t outputQueue = request.outputQueueSize;
    bool xonXoff = false;
    bool cts = false;
    if (request.useDefaults) {
        platform::SerialSettings defaults;
        bool empty = false;
        const char *name = path + (std::strncmp(path, "\\\\.\\", 4) == 0 ? 4 : 0);
        if (!platform::serialPortDefaults(name, &defaults, &empty)) return ZOR_RS232_INTERNAL_ERROR;
        if (empty) defaults = platform::SerialSettings{};
        baud = defaults.baudRate;
        parity = defaults.parity;
        dataBits = defaults.dataBits;
        stopBits = defaults.stopBits == 2 ? 2 : 1;
        xonXoff = !empty && defaults.xonXoffOutput && defaults.xonXoffInput;
        cts = !empty && defaults.ctsOutputFlow;
        inputQueue = port.inputQueueSize;
        outputQueue = port.outputQueueSize;
    }
    if (services::osVersionKnown()) {
        inputQueue = evenQueueSize(inputQueue);
        outputQueue = evenQueueSize(outputQueue);
    }
    if (int32_t error =
            CheckParmAndUpdateComConfig(port, baud, parity, dataBits, stopBits, inputQueue, outputQueue))
        return error;
    port.xonXoffMode = xonXoff;
    port.ctsMode = cts;
    port.dtrMode = 1;
    if (int32_t error = ApplyPortSettings(port)) return error;
    if (int32_t error = SetUpWritingThread(port)) return error;
    ++port.openCount;
    port.open = true;
    __ZOR_Resource_Acquire(&port, "Serial port connections", "Port %u with device %s",
                           static_cast<unsigned>(port.number),
                           request.deviceName != nullptr ? request.deviceName : "");
    return 0;
}

int32_t OpenComInternal(int32_t number, const OpenRequest &request) noexcept
{
    if (!validPort(number)) {
        SetRS232Err(ZOR_RS232_INVALID_PORT);
        logFailure(ZOR_RS232_INVALID_PORT, "OpenComInternal");
        return ZOR_RS232_INVALID_PORT;
    }
    if (int32_t error = CreateSystemObjectsForComPort(number)) {
        SetRS232Err(error);
        logFailure(error, "OpenComInternal");
        return error;
    }
    PortCall call(number, "OpenComInternal", false);
    if (call.result() != 0) return call.result();
    ComPort &port = *call.port();
    bool deviceOpened = false;
    const int32_t result = openLocked(port, request, &deviceOpened);
    if (result != 0) ClosePortAndReset(port, deviceOpened);
    return call.finish(result);
}

}  // namespace

void BuildDeviceName(int32_t port, const char *name, char *path, size_t size) noexcept
{
    char device[kMaxName + 1];
    if (name != nullptr && name[0] != '\0')
        std::snprintf(device, sizeof device, "%.250s", name);
    else
        std::snprintf(device, sizeof device, "%s%d", "COM", static_cast<int>(port));
    std::snprintf(path, size, "%s%s", device[0] == '\\' ? "" : "\\\\.\\", device);
}

int32_t CheckParmAndUpdateComConfig(ComPort &port, int32_t baud, int32_t parity, int32_t dataBits,
                                    int32_t stopBits, int32_t inputQueueSize,
                                    int32_t outputQueueSize) noexcept
{
    if (!validPort(port.number)) return ZOR_RS232_INVALID_PORT;
    if (baud < 1) return ZOR_RS232_INVALID_BAUD;
    if (parity < 0 || parity > 4) return ZOR_RS232_INVALID_PARITY;
    if (dataBits < 5 || dataBits > 8) return ZOR_RS232_INVALID_DATA_BITS;
    if (stopBits < 1 || stopBits > 2) return ZOR_RS232_INVALID_STOP_BITS;
    if (inputQueueSize < 0) return ZOR_RS232_INVALID_INPUT_QUEUE;
    port.baudRate = baud;
    port.parity = static_cast<uint8_t>(parity);
    port.dataBits = static_cast<uint8_t>(dataBits);
    port.stopBits = static_cast<uint8_t>(stopBits);
    port.inputQueueSize = queueSize(inputQueueSize);
    // A negative output queue size asks for writes without a writing thread.
    port.synchronousWrites = outputQueueSize < 0;
    port.outputQueueSize = queueSize(std::max(outputQueueSize, 0));
    return 0;
}

int32_t ClosePortAndReset(ComPort &port, bool closeDevice) noexcept
{
    port.open = false;
    ShutDownWritingThread(port);
    port.deviceName.reset();
    int32_t result = 0;
    if (closeDevice && port.device != nullptr) {
        const bool purged = FlushAndAbortTransfer(port, true);
        port.device->escape(6);  // clear DTR
        port.device->escape(4);  // clear RTS
        const bool closed = port.device->close();
        if (!purged || !closed) result = ZOR_RS232_INTERNAL_ERROR;
    }
    port.device.reset();
    port.resetSettings();
    // Applied once more, to a port without a device: the failure is only logged.
    ApplyPortSettings(port);
    __ZOR_Resource_Release(&port);
    return result;
}

}  // namespace tollan::rs232

using namespace tollan::rs232;

int32_t OpenCom(int32_t port, const char *deviceName) noexcept
{
    return OpenComInternal(port, {deviceName, kDefaultBaud, 0, kDefaultDataBits, 1, 0, 0, true});
}

int32_t OpenComConfig(int32_t port, const char *deviceName, int32_t baudRate, int32_t parity,
                      int32_t dataBits, int32_t stopBits, int32_t inputQueueSize,
                      int32_t outputQueueSize) noexcept
{
    return OpenComInternal(
        port, {deviceName, baudRate, parity, dataBits, stopBits, inputQueueSize, outputQueueSize, false});
}

int32_t CloseCom(int32_t port) noexcept
{
    PortCall call(port, "QX_CloseCom", false);
    if (call.result() != 0) return call.result();
    if (call.port() == nullptr || !call.port()->open) return call.finish(0);
    return call.finish(ClosePortAndReset(*call.port(), true));
}
