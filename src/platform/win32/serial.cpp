// Serial devices are COM devices opened for overlapped I/O, so that a read or
// a wait for input on a caller's thread and a write on the writing thread can
// be under way on one handle at the same time. Every operation is the
// communications call of the same name; a failure leaves the thread's last
// error as the system set it. A wait for input is a one-byte read whose
// time-outs end it at the first byte or after the time asked for; the byte
// it brings is held for the next read.
#include "platform/serial.h"

#include "platform/lock.h"

#include <windows.h>

#include <algorithm>
#include <mutex>
#include <cstring>
#include <new>
#include <string>

namespace tollan::platform {

static_assert(kSerialFileNotFound == ERROR_FILE_NOT_FOUND && kSerialAccessDenied == ERROR_ACCESS_DENIED &&
              kSerialInvalidHandle == ERROR_INVALID_HANDLE && kSerialNoMemory == ERROR_NOT_ENOUGH_MEMORY &&
              kSerialGeneralFailure == ERROR_GEN_FAILURE &&
              kSerialInvalidParameter == ERROR_INVALID_PARAMETER && kSerialOpenFailed == ERROR_OPEN_FAILED &&
              kSerialInvalidName == ERROR_INVALID_NAME && kSerialNotSupported == ERROR_NOT_SUPPORTED &&
              kSerialAborted == ERROR_OPERATION_ABORTED && kSerialIoDevice == ERROR_IO_DEVICE &&
              kSerialTimeout == ERROR_COUNTER_TIMEOUT);
static_assert(kPurgeTransmitAbort == PURGE_TXABORT && kPurgeReceiveAbort == PURGE_RXABORT &&
              kPurgeTransmitClear == PURGE_TXCLEAR && kPurgeReceiveClear == PURGE_RXCLEAR);
static_assert(kModemCts == MS_CTS_ON && kModemDsr == MS_DSR_ON && kModemRing == MS_RING_ON &&
              kModemCarrier == MS_RLSD_ON);

namespace {

constexpr DWORD kDefaultLanguage = (SUBLANG_DEFAULT << 10) | LANG_NEUTRAL;

// Keeps the thread's last error across calls whose own errors do not matter.
class KeepLastError {
public:
    KeepLastError() noexcept : error_(GetLastError()) {}
    ~KeepLastError() { SetLastError(error_); }
    KeepLastError(const KeepLastError &) = delete;
    KeepLastError &operator=(const KeepLastError &) = delete;

private:
    DWORD error_;
};

DWORD dtrControl(uint8_t control) noexcept
{
    switch (control) {
        case 0:
            return DTR_CONTROL_DISABLE;
        case 2:
            return DTR_CONTROL_HANDSHAKE;
        default:
            return DTR_CONTROL_ENABLE;
    }
}

DWORD rtsControl(uint8_t control) noexcept
{
    switch (control) {
        case 0:
            return RTS_CONTROL_DISABLE;
        case 2:
            return RTS_CONTROL_HANDSHAKE;
        default:
            return RTS_CONTROL_ENABLE;
    }
}

// The part of a device-control block that the settings report.
void handOut(const DCB &state, SerialSettings *settings) noexcept
{
    settings->baudRate = static_cast<int32_t>(state.BaudRate);
    settings->parity = state.Parity;
    settings->dataBits = state.ByteSize;
    settings->stopBits = state.StopBits == TWOSTOPBITS ? 2 : 1;
    settings->xonXoffOutput = state.fOutX != 0;
    settings->xonXoffInput = state.fInX != 0;
    settings->ctsOutputFlow = state.fOutxCtsFlow != 0;
}

class Win32SerialPort final : public SerialPort {
public:
    explicit Win32SerialPort(HANDLE device) noexcept : device_(device) {}
    ~Win32SerialPort() override { close(); }
    Win32SerialPort(const Win32SerialPort &) = delete;
    Win32SerialPort &operator=(const Win32SerialPort &) = delete;

    bool createEvents() noexcept
    {
        readEvent_ = CreateEventA(nullptr, FALSE, FALSE, nullptr);
        writeEvent_ = CreateEventA(nullptr, FALSE, FALSE, nullptr);
        return readEvent_ && writeEvent_;
    }

    bool apply(SerialSettings *settings, uint32_t inQueue, uint32_t outQueue) noexcept override
    {
        if (closed()) return false;
        // Bit fields not set here keep what the device last reported.
        state_.DCBlength = sizeof(DCB);
        state_.BaudRate = static_cast<DWORD>(settings->baudRate);
        state_.fBinary = TRUE;
        state_.fParity = settings->parityCheck;
        state_.fOutxCtsFlow = settings->ctsOutputFlow;
        state_.fOutxDsrFlow = FALSE;
        state_.fDtrControl = dtrControl(settings->dtrControl);
        state_.fDsrSensitivity = FALSE;
        state_.fTXContinueOnXoff = FALSE;
        state_.fOutX = settings->xonXoffOutput;
        state_.fInX = settings->xonXoffInput;
        state_.fErrorChar = FALSE;
        state_.fNull = FALSE;
        state_.fRtsControl = rtsControl(settings->rtsControl);
        state_.fAbortOnError = FALSE;
        state_.wReserved = 0;
        state_.XonLim = settings->xonLimit;
        state_.XoffLim = settings->xoffLimit;
        state_.ByteSize = settings->dataBits;
        state_.Parity = settings->parity;
        state_.StopBits = settings->stopBits == 1 ? ONESTOPBIT : TWOSTOPBITS;
        state_.XonChar = settings->xonChar;
        state_.XoffChar = settings->xoffChar;
        state_.ErrorChar = static_cast<char>(0xFF);
        state_.EofChar = 0;
        state_.EvtChar = 0;

        // Every step is taken even after one failed; the first failure is
        // the one reported.
        DWORD firstError = ERROR_SUCCESS;
        const auto step = [&firstError](BOOL done) noexcept {
            if (!done && firstError == ERROR_SUCCESS) firstError = GetLastError();
            return done != FALSE;
        };
        bool applied = step(SetCommState(device_, &state_));
        {
            // What the device took; when it cannot say, what was asked.
            KeepLastError keep;
            GetCommState(device_, &state_);
        }
        stateKnown_ = true;
        handOut(state_, settings);
        applied = step(SetupComm(device_, inQueue, outQueue)) && applied;
        // A read takes what the driver holds and returns at once; writes
        // have no time-out until setWriteTimeout gives one.
        {
            std::lock_guard hold(timeoutsLock_);
            timeouts_ = COMMTIMEOUTS{MAXDWORD, 0, 0, 0, 0};
            applied = step(SetCommTimeouts(device_, &timeouts_)) && applied;
        }
        if (!applied) SetLastError(firstError);
        return applied;
    }

    bool query(SerialSettings *settings, uint32_t *inQueue, uint32_t *outQueue) noexcept override
    {
        if (closed()) return false;
        bool done = GetCommState(device_, &state_) != FALSE;
        DWORD error = done ? ERROR_SUCCESS : GetLastError();
        if (done) stateKnown_ = true;
        // A state that cannot be read now is reported as it was last known.
        if (stateKnown_) handOut(state_, settings);
        if (inQueue != nullptr || outQueue != nullptr) {
            COMMPROP properties{};
            if (GetCommProperties(device_, &properties)) {
                if (inQueue != nullptr) *inQueue = properties.dwCurrentRxQueue;
                if (outQueue != nullptr) *outQueue = properties.dwCurrentTxQueue;
            } else if (done) {
                error = GetLastError();
                done = false;
            }
        }
        if (!done) SetLastError(error);
        return done;
    }

    bool setWriteTimeout(uint32_t ms) noexcept override
    {
        if (closed()) return false;
        std::lock_guard hold(timeoutsLock_);
        if (timeouts_.WriteTotalTimeoutConstant == ms) return true;
        COMMTIMEOUTS timeouts = timeouts_;
        timeouts.WriteTotalTimeoutConstant = ms;
        if (!SetCommTimeouts(device_, &timeouts)) return false;
        timeouts_ = timeouts;
        return true;
    }

    bool read(void *buffer, uint32_t count, uint32_t *got) noexcept override
    {
        *got = 0;
        if (closed()) return false;
        if (count == 0) return true;
        // The byte a wait brought comes first, alone, so that an error of
        // the read after it cannot lose it.
        if (held_) {
            *static_cast<unsigned char *>(buffer) = heldByte_;
            held_ = false;
            *got = 1;
            return true;
        }
        DWORD transferred = 0;
        const bool done = timedRead(buffer, count, kReturnAtOnce, &transferred);
        *got = transferred;
        return done;
    }

    bool waitReadable(uint32_t ms) noexcept override
    {
        if (closed()) return false;
        if (held_) return true;
        if (ms == 0) return false;
        // Waiting is no failure, whatever the read on the way reports.
        KeepLastError keep;
        // No interval and no total time-out: the read waits for its one byte.
        const ReadTimeouts limit =
            ms == INFINITE ? ReadTimeouts{0, 0, 0} : ReadTimeouts{MAXDWORD, MAXDWORD, ms};
        DWORD transferred = 0;
        const bool done = timedRead(&heldByte_, 1, limit, &transferred);
        held_ = transferred == 1;
        // A failed read other than an abort is reported by the next read.
        return held_ || (!done && GetLastError() != ERROR_OPERATION_ABORTED);
    }

    bool write(const void *buffer, uint32_t count, uint32_t *written) noexcept override
    {
        *written = 0;
        if (closed()) return false;
        OVERLAPPED overlapped{};
        overlapped.hEvent = writeEvent_;
        if (!WriteFile(device_, buffer, count, nullptr, &overlapped) && GetLastError() != ERROR_IO_PENDING)
            return false;
        // The write time-out ends the write with what was taken; a purge
        // that aborts transmission ends it with ERROR_OPERATION_ABORTED.
        DWORD transferred = 0;
        const bool done = GetOverlappedResult(device_, &overlapped, &transferred, TRUE) != FALSE;
        *written = transferred;
        return done;
    }

    // Every write of a COM device may wait under the communications
    // time-outs, which the writing thread owns: nothing goes this way.
    bool writeNow(const void *, uint32_t, uint32_t *written) noexcept override
    {
        *written = 0;
        return !closed();
    }

    void interrupt() noexcept override
    {
        if (closed()) return;
        KeepLastError keep;
        PurgeComm(device_, PURGE_TXABORT | PURGE_RXABORT);
    }

    bool purge(uint32_t flags) noexcept override
    {
        if (closed()) return false;
        if ((flags & PURGE_RXCLEAR) != 0) held_ = false;
        return PurgeComm(device_, flags) != FALSE;
    }

    bool escape(uint32_t code) noexcept override
    {
        return !closed() && EscapeCommFunction(device_, code) != FALSE;
    }

    bool driverRequest(uint32_t code, const void *input, uint32_t inputSize, void *output,
                       uint32_t outputSize) noexcept override
    {
        if (closed()) return false;
        // A request of its own: it may run beside a read or a write.
        const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
        if (!event) return false;
        OVERLAPPED overlapped{};
        overlapped.hEvent = event;
        DWORD returned = 0;
        bool done = DeviceIoControl(device_, code, const_cast<void *>(input), inputSize, output, outputSize,
                                    nullptr, &overlapped) != FALSE;
        if (!done && GetLastError() == ERROR_IO_PENDING)
            done = GetOverlappedResult(device_, &overlapped, &returned, TRUE) != FALSE;
        {
            KeepLastError keep;
            CloseHandle(event);
        }
        return done;
    }

    bool status(SerialStatus *status) noexcept override
    {
        if (closed()) return false;
        DWORD errors = 0;
        COMSTAT state{};
        if (!ClearCommError(device_, &errors, &state)) return false;
        status->errors = errors;
        status->holdByXoff = state.fXoffHold != 0;
        status->xoffSent = state.fXoffSent != 0;
        status->inQueue = state.cbInQue + (held_ ? 1 : 0);
        status->outQueue = state.cbOutQue;
        return true;
    }

    bool modemStatus(uint32_t *bits) noexcept override
    {
        if (closed()) return false;
        DWORD lines = 0;
        if (!GetCommModemStatus(device_, &lines)) return false;
        *bits = lines;
        return true;
    }

    bool setBreak(bool on) noexcept override
    {
        if (closed()) return false;
        return (on ? SetCommBreak(device_) : ClearCommBreak(device_)) != FALSE;
    }

    intptr_t systemHandle() const noexcept override { return reinterpret_cast<intptr_t>(device_); }

    bool close() noexcept override
    {
        if (device_ == INVALID_HANDLE_VALUE) return true;
        const bool done = CloseHandle(device_) != FALSE;
        KeepLastError keep;
        device_ = INVALID_HANDLE_VALUE;
        held_ = false;
        for (HANDLE *event : {&readEvent_, &writeEvent_}) {
            if (*event) CloseHandle(*event);
            *event = nullptr;
        }
        return done;
    }

private:
    // The read part of the communications time-outs.
    struct ReadTimeouts {
        DWORD interval;
        DWORD multiplier;
        DWORD constant;
    };
    static constexpr ReadTimeouts kReturnAtOnce{MAXDWORD, 0, 0};

    // A closed port refuses every call as a closed handle would.
    bool closed() const noexcept
    {
        if (device_ != INVALID_HANDLE_VALUE) return false;
        SetLastError(ERROR_INVALID_HANDLE);
        return true;
    }

    // One overlapped read under the given read time-outs. The time-outs are
    // set, when they change, together with the read's start, so that the
    // writing thread's write time-out never meets a half-changed set.
    bool timedRead(void *buffer, DWORD count, ReadTimeouts limit, DWORD *transferred) noexcept
    {
        *transferred = 0;
        OVERLAPPED overlapped{};
        overlapped.hEvent = readEvent_;
        {
            std::lock_guard hold(timeoutsLock_);
            if (timeouts_.ReadIntervalTimeout != limit.interval ||
                timeouts_.ReadTotalTimeoutMultiplier != limit.multiplier ||
                timeouts_.ReadTotalTimeoutConstant != limit.constant) {
                COMMTIMEOUTS timeouts = timeouts_;
                timeouts.ReadIntervalTimeout = limit.interval;
                timeouts.ReadTotalTimeoutMultiplier = limit.multiplier;
                timeouts.ReadTotalTimeoutConstant = limit.constant;
                if (!SetCommTimeouts(device_, &timeouts)) return false;
                timeouts_ = timeouts;
            }
            if (!ReadFile(device_, buffer, count, nullptr, &overlapped) && GetLastError() != ERROR_IO_PENDING)
                return false;
        }
        return GetOverlappedResult(device_, &overlapped, transferred, TRUE) != FALSE;
    }

    HANDLE device_;
    HANDLE readEvent_ = nullptr;   // auto-reset: a read's completion
    HANDLE writeEvent_ = nullptr;  // auto-reset: a write's completion
    // The device-control block as last given to or read from the device.
    DCB state_{};
    bool stateKnown_ = false;
    // The communications time-outs as last set.
    COMMTIMEOUTS timeouts_{};
    platform::RecursiveLock timeoutsLock_;
    // The byte a wait for input read, not yet handed to a read.
    bool held_ = false;
    unsigned char heldByte_ = 0;
};

}  // namespace

std::unique_ptr<SerialPort> SerialPort::open(const char *devicePath) noexcept
{
    if (devicePath == nullptr) {
        SetLastError(ERROR_INVALID_NAME);
        return nullptr;
    }
    const HANDLE device = CreateFileA(devicePath, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_OVERLAPPED, nullptr);
    if (device == INVALID_HANDLE_VALUE) return nullptr;
    std::unique_ptr<Win32SerialPort> port(new (std::nothrow) Win32SerialPort(device));
    if (!port) {
        CloseHandle(device);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    if (!port->createEvents()) {
        port.reset();
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    return port;
}

uint32_t lastSerialError() noexcept
{
    return GetLastError();
}

void setLastSerialError(uint32_t error) noexcept
{
    SetLastError(error);
}

bool serialPortDefaults(const char *deviceName, SerialSettings *settings, bool *empty) noexcept
{
    *settings = SerialSettings{};
    *empty = false;
    if (deviceName == nullptr) return false;
    if (std::strncmp(deviceName, "\\\\.\\", 4) == 0) deviceName += 4;
    char entry[256] = "";
    try {
        const std::string key = std::string(deviceName) + ":";
        GetProfileStringA("ports", key.c_str(), "9600,n,7,1", entry, sizeof entry);
    } catch (...) {
        return false;
    }
    if (entry[0] == '\0') {
        *empty = true;
        return true;
    }
    DCB state{};
    state.DCBlength = sizeof state;
    if (!BuildCommDCBA(entry, &state)) return false;
    handOut(state, settings);
    return true;
}

bool serialErrorText(uint32_t error, char *buffer, size_t size) noexcept
{
    if (buffer == nullptr || size == 0) return false;
    char *text = nullptr;
    const DWORD length = FormatMessageA(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        error, kDefaultLanguage, reinterpret_cast<char *>(&text), 0, nullptr);
    if (text == nullptr) return false;
    if (length == 0) {
        LocalFree(text);
        return false;
    }
    const size_t copied = std::min<size_t>(length, size - 1);
    std::memcpy(buffer, text, copied);
    buffer[copied] = '\0';
    LocalFree(text);
    return true;
}

}  // namespace tollan::platform
