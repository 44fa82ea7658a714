// Serial devices are COM devices opened for overlapped I/O, so that a read or
// a wait for input on a caller's thread and a write on the writing thread can
// be under way on one handle at the same time. Every operation is the
// communications call of the same name; a failure leaves the thread's last
// error as the system set it.
#include "platform/serial.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
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
        waitEvent_ = CreateEventA(nullptr, TRUE, FALSE, nullptr);
        interruptEvent_ = CreateEventA(nullptr, FALSE, FALSE, nullptr);
        return readEvent_ && writeEvent_ && waitEvent_ && interruptEvent_;
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
        COMMTIMEOUTS timeouts{MAXDWORD, 0, 0, 0, 0};
        applied = step(SetCommTimeouts(device_, &timeouts)) && applied;
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
        COMMTIMEOUTS timeouts{MAXDWORD, 0, 0, 0, ms};
        return SetCommTimeouts(device_, &timeouts) != FALSE;
    }

    bool read(void *buffer, uint32_t count, uint32_t *got) noexcept override
    {
        *got = 0;
        if (closed()) return false;
        OVERLAPPED overlapped{};
        overlapped.hEvent = readEvent_;
        if (!ReadFile(device_, buffer, count, nullptr, &overlapped) && GetLastError() != ERROR_IO_PENDING)
            return false;
        DWORD transferred = 0;
        const bool done = GetOverlappedResult(device_, &overlapped, &transferred, TRUE) != FALSE;
        *got = transferred;
        return done;
    }

    bool waitReadable(uint32_t ms) noexcept override
    {
        if (closed()) return false;
        // Waiting is no failure, whatever the calls on the way report.
        KeepLastError keep;
        const bool forever = ms == INFINITE;
        const ULONGLONG deadline = GetTickCount64() + ms;
        for (;;) {
            const ULONGLONG now = GetTickCount64();
            const DWORD left = forever ? INFINITE : static_cast<DWORD>(deadline > now ? deadline - now : 0);
            switch (waitOnce(left)) {
                case Wait::byte:
                    return true;
                case Wait::timedOut:
                case Wait::interrupted:
                    return false;
                case Wait::unusable:
                    // No event to wait for: the caller polls again shortly.
                    Sleep(1);
                    return true;
                case Wait::nothing:
                    // The wait ended without a byte (its mask was changed):
                    // wait again, but never at full speed.
                    if (left == 0) return false;
                    Sleep(1);
                    break;
            }
        }
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

    void interrupt() noexcept override
    {
        if (closed()) return;
        KeepLastError keep;
        SetEvent(interruptEvent_);
        PurgeComm(device_, PURGE_TXABORT | PURGE_RXABORT);
    }

    bool purge(uint32_t flags) noexcept override { return !closed() && PurgeComm(device_, flags) != FALSE; }

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
        status->errors = errors | missedErrors_.exchange(0);
        status->holdByXoff = state.fXoffHold != 0;
        status->xoffSent = state.fXoffSent != 0;
        status->inQueue = state.cbInQue;
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
        for (HANDLE *event : {&readEvent_, &writeEvent_, &waitEvent_, &interruptEvent_}) {
            if (*event) CloseHandle(*event);
            *event = nullptr;
        }
        return done;
    }

private:
    enum class Wait { byte, nothing, timedOut, interrupted, unusable };

    // A closed port refuses every call as a closed handle would.
    bool closed() const noexcept
    {
        if (device_ != INVALID_HANDLE_VALUE) return false;
        SetLastError(ERROR_INVALID_HANDLE);
        return true;
    }

    // Whether the driver holds received bytes. Looking clears the driver's
    // error flags: they are kept for the next status report.
    bool bytesWaiting() noexcept
    {
        DWORD errors = 0;
        COMSTAT state{};
        if (!ClearCommError(device_, &errors, &state)) return false;
        if (errors != 0) missedErrors_.fetch_or(errors);
        return state.cbInQue > 0;
    }

    // One wait for a received character. It always ends with the device's
    // wait complete, so that nothing is left writing into `overlapped` or
    // `events` once this returns.
    Wait waitOnce(DWORD ms) noexcept
    {
        if (!SetCommMask(device_, EV_RXCHAR)) return Wait::unusable;
        ResetEvent(waitEvent_);
        OVERLAPPED overlapped{};
        overlapped.hEvent = waitEvent_;
        DWORD events = 0;
        if (WaitCommEvent(device_, &events, &overlapped))
            return (events & EV_RXCHAR) != 0 || bytesWaiting() ? Wait::byte : Wait::nothing;
        if (GetLastError() != ERROR_IO_PENDING) return Wait::unusable;
        // Bytes that came before the wait began raise no event: they are
        // looked for once the wait is in place, so none slips between.
        if (bytesWaiting()) {
            endWait(&overlapped);
            return Wait::byte;
        }
        const HANDLE handles[] = {waitEvent_, interruptEvent_};
        const DWORD woken = WaitForMultipleObjects(2, handles, FALSE, ms);
        if (woken == WAIT_OBJECT_0) {
            DWORD unused = 0;
            if (!GetOverlappedResult(device_, &overlapped, &unused, TRUE)) return Wait::unusable;
            return (events & EV_RXCHAR) != 0 || bytesWaiting() ? Wait::byte : Wait::nothing;
        }
        endWait(&overlapped);
        switch (woken) {
            case WAIT_OBJECT_0 + 1:
                return Wait::interrupted;
            case WAIT_TIMEOUT:
                return Wait::timedOut;
            default:
                return Wait::unusable;
        }
    }

    // Cancels a wait that is still pending and waits until it has ended.
    void endWait(OVERLAPPED *overlapped) noexcept
    {
        // An empty mask ends the wait where cancelling cannot.
        if (!CancelIoEx(device_, overlapped) && GetLastError() != ERROR_NOT_FOUND) SetCommMask(device_, 0);
        DWORD unused = 0;
        GetOverlappedResult(device_, overlapped, &unused, TRUE);
    }

    HANDLE device_;
    HANDLE readEvent_ = nullptr;       // auto-reset: a read's completion
    HANDLE writeEvent_ = nullptr;      // auto-reset: a write's completion
    HANDLE waitEvent_ = nullptr;       // manual-reset: a wait for a character
    HANDLE interruptEvent_ = nullptr;  // auto-reset: ends the wait in progress, or the next one
    // The device-control block as last given to or read from the device.
    DCB state_{};
    bool stateKnown_ = false;
    // Line errors cleared while waiting, not yet reported by status().
    std::atomic<uint32_t> missedErrors_{0};
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
