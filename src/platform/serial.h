// Serial devices, in the communications model of Windows (CreateFile on a
// COM device, a device-control block, PurgeComm, ClearCommError, escape
// functions). Windows uses those calls exactly; POSIX maps them onto termios
// and the tty ioctls (see docs/platform.md).
//
// A call that fails leaves a Windows system error code (kSerial* below, the
// numbers GetLastError gives) as the calling thread's last serial error, so
// that the serial library maps every failure the same way on both systems.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tollan::platform {

// The system error codes a serial device reports.
inline constexpr uint32_t kSerialNoError = 0;
inline constexpr uint32_t kSerialFileNotFound = 2;       // ERROR_FILE_NOT_FOUND
inline constexpr uint32_t kSerialAccessDenied = 5;       // ERROR_ACCESS_DENIED: in use by another process
inline constexpr uint32_t kSerialInvalidHandle = 6;      // ERROR_INVALID_HANDLE
inline constexpr uint32_t kSerialNoMemory = 8;           // ERROR_NOT_ENOUGH_MEMORY
inline constexpr uint32_t kSerialGeneralFailure = 31;    // ERROR_GEN_FAILURE: the device went away
inline constexpr uint32_t kSerialInvalidParameter = 87;  // ERROR_INVALID_PARAMETER
inline constexpr uint32_t kSerialOpenFailed = 110;       // ERROR_OPEN_FAILED
inline constexpr uint32_t kSerialInvalidName = 123;      // ERROR_INVALID_NAME
inline constexpr uint32_t kSerialNotSupported = 50;      // ERROR_NOT_SUPPORTED
inline constexpr uint32_t kSerialAborted = 995;          // ERROR_OPERATION_ABORTED
inline constexpr uint32_t kSerialIoDevice = 1117;        // ERROR_IO_DEVICE
inline constexpr uint32_t kSerialTimeout = 1121;         // ERROR_COUNTER_TIMEOUT

// What the device-control block says, as far as the serial library sets or
// reads it.
struct SerialSettings {
    int32_t baudRate = 9600;
    uint8_t parity = 0;  // 0 none, 1 odd, 2 even, 3 mark, 4 space
    bool parityCheck = false;
    uint8_t dataBits = 7;  // 5 to 8
    uint8_t stopBits = 1;  // 1 or 2
    bool xonXoffOutput = false;
    bool xonXoffInput = false;
    bool ctsOutputFlow = false;
    uint8_t dtrControl = 1;  // 0 disabled, 1 enabled, 2 handshaking
    uint8_t rtsControl = 1;  // 0 disabled, 1 enabled, 2 handshaking
    uint16_t xonLimit = 0;
    uint16_t xoffLimit = 0;
    char xonChar = 0x11;
    char xoffChar = 0x13;
};

// PurgeComm's flags.
inline constexpr uint32_t kPurgeTransmitAbort = 0x1;
inline constexpr uint32_t kPurgeReceiveAbort = 0x2;
inline constexpr uint32_t kPurgeTransmitClear = 0x4;
inline constexpr uint32_t kPurgeReceiveClear = 0x8;

// ClearCommError's report.
struct SerialStatus {
    uint32_t errors;  // CE_RXOVER 0x1, CE_OVERRUN 0x2, CE_RXPARITY 0x4, CE_FRAME 0x8, CE_BREAK 0x10
    bool holdByXoff;  // transmission waits for XON
    bool xoffSent;
    uint32_t inQueue;
    uint32_t outQueue;
};

// GetCommModemStatus's bits.
inline constexpr uint32_t kModemCts = 0x10;
inline constexpr uint32_t kModemDsr = 0x20;
inline constexpr uint32_t kModemRing = 0x40;
inline constexpr uint32_t kModemCarrier = 0x80;

class SerialPort {
public:
    virtual ~SerialPort() = default;  // closes the device when close() did not

    // Opens the device exclusively for reading and writing; null on failure
    // (the last serial error is then kSerialFileNotFound for a device that
    // does not exist, kSerialAccessDenied for one in use).
    static std::unique_ptr<SerialPort> open(const char *devicePath) noexcept;

    // SetCommState, GetCommState (into *settings: what the device took),
    // SetupComm with the queue sizes, and read time-outs that return at once
    // with what is there. False when the state or the queues are refused.
    virtual bool apply(SerialSettings *settings, uint32_t inQueue, uint32_t outQueue) noexcept = 0;
    // GetCommState and, when asked, the current queue sizes.
    virtual bool query(SerialSettings *settings, uint32_t *inQueue, uint32_t *outQueue) noexcept = 0;
    // SetCommTimeouts for writes: a write gives up after `ms` milliseconds.
    virtual bool setWriteTimeout(uint32_t ms) noexcept = 0;

    // Takes at most `count` bytes that have arrived, without waiting.
    virtual bool read(void *buffer, uint32_t count, uint32_t *got) noexcept = 0;
    // Waits until a byte has arrived, for at most `ms` milliseconds
    // (0xFFFFFFFF: no limit) or until interrupt(). True when one is there.
    virtual bool waitReadable(uint32_t ms) noexcept = 0;
    // Writes, giving up after the write time-out; *written: bytes taken.
    virtual bool write(const void *buffer, uint32_t count, uint32_t *written) noexcept = 0;
    // Hands the device what it takes at once, without waiting; *written may
    // be 0. A device that cannot tell takes nothing this way.
    virtual bool writeNow(const void *buffer, uint32_t count, uint32_t *written) noexcept = 0;
    // Ends every wait and write in progress on other threads (close).
    virtual void interrupt() noexcept = 0;

    virtual bool purge(uint32_t flags) noexcept = 0;
    // EscapeCommFunction: SETXOFF 1, SETXON 2, SETRTS 3, CLRRTS 4, SETDTR 5,
    // CLRDTR 6, SETBREAK 8, CLRBREAK 9.
    virtual bool escape(uint32_t code) noexcept = 0;
    // A buffered device I/O control request to the serial driver.
    virtual bool driverRequest(uint32_t code, const void *input, uint32_t inputSize, void *output,
                               uint32_t outputSize) noexcept = 0;
    virtual bool status(SerialStatus *status) noexcept = 0;
    virtual bool modemStatus(uint32_t *bits) noexcept = 0;
    virtual bool setBreak(bool on) noexcept = 0;
    // The system's own handle (a HANDLE, or the descriptor).
    virtual intptr_t systemHandle() const noexcept = 0;
    // Closes the device; false when the system reported a failure (the
    // device is closed all the same).
    virtual bool close() noexcept = 0;
};

// The calling thread's last serial error (GetLastError), and setting it.
uint32_t lastSerialError() noexcept;
void setLastSerialError(uint32_t error) noexcept;

// The system's default settings of a device ("COM3"): the "ports" profile
// entry "COM3:", default "9600,n,7,1", parsed as BuildCommDCB parses it.
// *empty: the entry is empty. False when the entry cannot be parsed.
bool serialPortDefaults(const char *deviceName, SerialSettings *settings, bool *empty) noexcept;

// The system's text of a serial error code; false when it has none.
bool serialErrorText(uint32_t error, char *buffer, size_t size) noexcept;

}  // namespace tollan::platform
