// Serial devices on termios. The device is opened exclusively (TIOCEXCL,
// and an flock that also holds against root), reads take what has arrived,
// waits for bytes block in poll(), writes block in write() until the
// deadline watcher or an abort ends them, and every system call goes through
// the replaceable table. Failures leave a Windows error code as the
// thread's last serial error, with the errno behind it for the error's text.
#include "platform/serial.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

#include <linux/serial.h>

#include "platform/lock.h"
#include "platform/posix/deadline.h"
#include "platform/posix/serial_speed.h"
#include "platform/posix/system_calls.h"
#include "platform/posix/write_deadlines.h"
#include "platform/settings_store.h"

namespace tollan::platform {

using posix::sys;

namespace {

thread_local uint32_t lastError = kSerialNoError;
thread_local int lastErrno = 0;

// Records a failure from errno as its Windows code; always false.
bool fail(uint32_t code) noexcept
{
    lastErrno = errno;
    lastError = code;
    return false;
}

// The Windows code of a failed transfer or request.
uint32_t transferError(int error) noexcept
{
    switch (error) {
        case EIO:
        case ENXIO:
        case ENODEV:
        case EBADF:
            return kSerialGeneralFailure;  // the device went away
        case ENOMEM:
            return kSerialNoMemory;
        case ENOTTY:
        case EINVAL:
        case ENOSYS:
        case EOPNOTSUPP:
            return kSerialNotSupported;
        default:
            return kSerialIoDevice;
    }
}

bool failTransfer() noexcept
{
    return fail(transferError(errno));
}

struct SpeedName {
    int baud;
    speed_t speed;
};

constexpr SpeedName kSpeeds[] = {
    {50, B50},           {75, B75},           {110, B110},         {134, B134},         {150, B150},
    {200, B200},         {300, B300},         {600, B600},         {1200, B1200},       {1800, B1800},
    {2400, B2400},       {4800, B4800},       {9600, B9600},       {19200, B19200},     {38400, B38400},
    {57600, B57600},     {115200, B115200},   {230400, B230400},   {460800, B460800},   {500000, B500000},
    {576000, B576000},   {921600, B921600},   {1000000, B1000000}, {1152000, B1152000}, {1500000, B1500000},
    {2000000, B2000000}, {2500000, B2500000}, {3000000, B3000000}, {3500000, B3500000}, {4000000, B4000000},
};

// "\\.\COM3" is /dev/ttyS2; "\\.\/dev/pts/4" and "/dev/pts/4" are themselves;
// "\\.\ttyUSB0" is /dev/ttyUSB0.
std::string devicePath(const char *name)
{
    std::string path(name);
    if (path.rfind("\\\\.\\", 0) == 0) path.erase(0, 4);
    unsigned number = 0;
    char rest = 0;
    if ((path.rfind("COM", 0) == 0 || path.rfind("com", 0) == 0) &&
        std::sscanf(path.c_str() + 3, "%u%c", &number, &rest) == 1 && number >= 1)
        return "/dev/ttyS" + std::to_string(number - 1);
    if (!path.empty() && path[0] == '/') return path;
    return "/dev/" + path;
}

// The terminal ends of Unix 98 pseudo-terminals have majors 136 to 143.
bool isPseudoTerminal(int fd) noexcept
{
    struct stat status {};
    if (sys().fstat(fd, &status) != 0 || !S_ISCHR(status.st_mode)) return false;
    const unsigned kind = major(status.st_rdev);
    return kind >= 136 && kind <= 143;
}

// The port has two descriptors of the device: a non-blocking one for reads,
// requests and writes that must not wait, and a blocking one for writes. A
// blocked write is ended by making its descriptor non-blocking and waking
// it: setting the terminal's attributes (unchanged) wakes its writers, and
// a woken write that finds its descriptor non-blocking returns what it has
// written.
class PosixSerialPort final : public SerialPort, public posix::WriteDeadline {
public:
    PosixSerialPort(int fd, int writeFd) noexcept
        : fd_(fd), writeFd_(writeFd), pseudoTerminal_(isPseudoTerminal(fd))
    {
    }
    ~PosixSerialPort() override { close(); }

    bool apply(SerialSettings *settings, uint32_t inQueue, uint32_t outQueue) noexcept override
    {
        termios mode{};
        if (sys().tcgetattr(fd_, &mode) != 0) return failTransfer();
        mode.c_iflag &= ~static_cast<tcflag_t>(IGNBRK | BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL |
                                               IXON | IXOFF | IXANY | INPCK | IGNPAR);
        mode.c_oflag &= ~static_cast<tcflag_t>(OPOST);
        mode.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL | ICANON | ISIG | IEXTEN);
        mode.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CMSPAR | CSTOPB | CRTSCTS);
        mode.c_cflag |= CREAD | CLOCAL;
        static constexpr tcflag_t kSizes[] = {CS5, CS6, CS7, CS8};
        mode.c_cflag |= kSizes[std::clamp<int>(settings->dataBits, 5, 8) - 5];
        switch (settings->parity) {
            case 1:
                mode.c_cflag |= PARENB | PARODD;
                break;
            case 2:
                mode.c_cflag |= PARENB;
                break;
            case 3:
                mode.c_cflag |= PARENB | PARODD | CMSPAR;
                break;  // mark
            case 4:
                mode.c_cflag |= PARENB | CMSPAR;
                break;  // space
            default:
                break;
        }
        if (settings->parityCheck) mode.c_iflag |= INPCK;
        if (settings->stopBits == 2) mode.c_cflag |= CSTOPB;
        if (settings->ctsOutputFlow || settings->rtsControl == 2) mode.c_cflag |= CRTSCTS;
        if (settings->xonXoffOutput) mode.c_iflag |= IXON;
        if (settings->xonXoffInput) mode.c_iflag |= IXOFF;
        mode.c_cc[VSTART] = static_cast<cc_t>(settings->xonChar);
        mode.c_cc[VSTOP] = static_cast<cc_t>(settings->xoffChar);
        // Reads return at once with what has arrived.
        mode.c_cc[VMIN] = 0;
        mode.c_cc[VTIME] = 0;
        const speed_t *speed = nullptr;
        for (const SpeedName &known : kSpeeds)
            if (known.baud == settings->baudRate) speed = &known.speed;
        if (speed != nullptr) {
            cfsetispeed(&mode, *speed);
            cfsetospeed(&mode, *speed);
        }
        {
            const std::lock_guard<RecursiveLock> hold(attributesLock_);
            if (sys().tcsetattr(fd_, TCSANOW, &mode) != 0 && !framingForcedByDriver(mode))
                return failTransfer();
            if (speed == nullptr && !posix::setAnySpeed(fd_, settings->baudRate))
                return fail(kSerialInvalidParameter);
        }
        // DTR and RTS held on; a driver without modem lines (a pseudo-
        // terminal) has nothing to hold.
        int lines = TIOCM_DTR | TIOCM_RTS;
        if (settings->dtrControl != 0) sys().ioctl(fd_, TIOCMBIS, &lines);
        inQueue_ = inQueue;
        outQueue_ = outQueue;
        return query(settings, nullptr, nullptr);
    }

    bool query(SerialSettings *settings, uint32_t *inQueue, uint32_t *outQueue) noexcept override
    {
        termios mode{};
        if (sys().tcgetattr(fd_, &mode) != 0) return failTransfer();
        int baud = 0;
        const speed_t speed = cfgetospeed(&mode);
        for (const SpeedName &known : kSpeeds)
            if (known.speed == speed) baud = known.baud;
        if (baud == 0) posix::anySpeed(fd_, &baud);
        if (baud > 0) settings->baudRate = baud;
        switch (mode.c_cflag & CSIZE) {
            case CS5:
                settings->dataBits = 5;
                break;
            case CS6:
                settings->dataBits = 6;
                break;
            case CS7:
                settings->dataBits = 7;
                break;
            default:
                settings->dataBits = 8;
                break;
        }
        if ((mode.c_cflag & PARENB) == 0)
            settings->parity = 0;
        else if ((mode.c_cflag & CMSPAR) != 0)
            settings->parity = (mode.c_cflag & PARODD) != 0 ? 3 : 4;
        else
            settings->parity = (mode.c_cflag & PARODD) != 0 ? 1 : 2;
        settings->stopBits = (mode.c_cflag & CSTOPB) != 0 ? 2 : 1;
        settings->ctsOutputFlow = (mode.c_cflag & CRTSCTS) != 0;
        settings->xonXoffOutput = (mode.c_iflag & IXON) != 0;
        settings->xonXoffInput = (mode.c_iflag & IXOFF) != 0;
        if (inQueue != nullptr) *inQueue = inQueue_;
        if (outQueue != nullptr) *outQueue = outQueue_;
        return true;
    }

    bool setWriteTimeout(uint32_t ms) noexcept override
    {
        writeTimeoutMs_.store(ms);
        return true;
    }

    bool read(void *buffer, uint32_t count, uint32_t *got) noexcept override
    {
        *got = 0;
        for (;;) {
            const ssize_t n = sys().read(fd_, buffer, count);
            // A terminal whose line was hung up reads as empty for ever.
            if (n == 0 && count > 0 && hungUp_.load()) {
                errno = EIO;
                return failTransfer();
            }
            if (n >= 0) {
                *got = static_cast<uint32_t>(n);
                return true;
            }
            if (errno == EINTR) continue;
            if (errno == EAGAIN || errno == EWOULDBLOCK) return true;
            return failTransfer();
        }
    }

    bool waitReadable(uint32_t ms) noexcept override
    {
        const bool forever = ms == 0xFFFFFFFFu;
        const timespec deadline = posix::monotonicDeadline(forever ? 0 : ms);
        for (;;) {
            pollfd wait{fd_, POLLIN, 0};
            const int timeout = forever ? -1 : static_cast<int>(posix::remainingMs(deadline));
            const int ready = sys().poll(&wait, 1, timeout);
            if (ready > 0) {
                // Data, or a hang-up that the next read reports.
                if ((wait.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) hungUp_.store(true);
                return true;
            }
            if (ready == 0) return false;
            if (errno != EINTR) return failTransfer();
        }
    }

    bool write(const void *buffer, uint32_t count, uint32_t *written) noexcept override
    {
        *written = 0;
        const WriteUnderWay underWay(writesUnderWay_);
        const uint64_t generation = abortGeneration_.load();
        const uint32_t timeoutMs = writeTimeoutMs_.load();
        if (timeoutMs != 0 && !posix::armWriteDeadline(this, timeoutMs)) {
            errno = ENOMEM;
            return fail(kSerialNoMemory);
        }
        const DisarmAtEnd disarm(dueNs);
        const auto *bytes = static_cast<const char *>(buffer);
        bool makeBlocking = false;
        while (*written < count) {
            // An ended write left the descriptor non-blocking; so may an end
            // that came too late for the write it was meant for.
            if (endingWrite_.exchange(false) || makeBlocking) {
                if (sys().fcntl(writeFd_, F_SETFL, 0) != 0) return failTransfer();
                makeBlocking = false;
            }
            if (abortGeneration_.load() != generation) return fail(kSerialAborted);
            if (timeoutMs != 0 && dueNs.load() == 0) return true;  // timed out
            const ssize_t n = sys().write(writeFd_, bytes + *written, count - *written);
            if (n > 0) {
                *written += static_cast<uint32_t>(n);
            } else if (n < 0 && errno != EINTR && errno != EAGAIN && errno != EWOULDBLOCK) {
                return failTransfer();
            } else if (n < 0 && errno != EINTR) {
                makeBlocking = true;
            }
        }
        return true;
    }

    bool writeNow(const void *buffer, uint32_t count, uint32_t *written) noexcept override
    {
        *written = 0;
        for (;;) {
            const ssize_t n = sys().write(fd_, buffer, count);
            if (n >= 0) {
                *written = static_cast<uint32_t>(n);
                return true;
            }
            if (errno == EINTR) continue;
            if (errno == EAGAIN || errno == EWOULDBLOCK) return true;
            return failTransfer();
        }
    }

    void interrupt() noexcept override
    {
        abortGeneration_.fetch_add(1);
        // A write that begins later sees the new generation, so an abort
        // with none under way (every flush of an idle queue) ends nothing.
        if (writesUnderWay_.load() != 0) endBlockedWrite();
    }

    void deadlinePassed() noexcept override { endBlockedWrite(); }

    bool purge(uint32_t flags) noexcept override
    {
        if ((flags & kPurgeTransmitAbort) != 0) interrupt();
        int queue = -1;
        const bool receive = (flags & kPurgeReceiveClear) != 0;
        // What a pseudo-terminal was given has reached the far end already
        // (a line's transmit buffer would have sent it); dropping it there
        // would take from the peer what it has not read yet, such as the
        // last answer of a transfer just before a close.
        const bool transmit = (flags & kPurgeTransmitClear) != 0 && !pseudoTerminal_;
        if (receive && transmit)
            queue = TCIOFLUSH;
        else if (receive)
            queue = TCIFLUSH;
        else if (transmit)
            queue = TCOFLUSH;
        if (queue >= 0 && sys().tcflush(fd_, queue) != 0) return failTransfer();
        return true;
    }

    bool escape(uint32_t code) noexcept override
    {
        int lines = 0;
        unsigned long request = 0;
        switch (code) {
            case 1:
                return sys().tcflow(fd_, TCOOFF) == 0 || failTransfer();
            case 2:
                return sys().tcflow(fd_, TCOON) == 0 || failTransfer();
            case 3:
                request = TIOCMBIS;
                lines = TIOCM_RTS;
                break;
            case 4:
                request = TIOCMBIC;
                lines = TIOCM_RTS;
                break;
            case 5:
                request = TIOCMBIS;
                lines = TIOCM_DTR;
                break;
            case 6:
                request = TIOCMBIC;
                lines = TIOCM_DTR;
                break;
            case 8:
                return setBreak(true);
            case 9:
                return setBreak(false);
            default:
                return fail(kSerialInvalidParameter);
        }
        return sys().ioctl(fd_, request, &lines) == 0 || failTransfer();
    }

    // The requests of the Windows serial driver have no counterpart in the
    // tty driver.
    bool driverRequest(uint32_t, const void *, uint32_t, void *, uint32_t) noexcept override
    {
        errno = EOPNOTSUPP;
        return fail(kSerialNotSupported);
    }

    bool status(SerialStatus *status) noexcept override
    {
        *status = SerialStatus{};
        int waiting = 0;
        if (sys().ioctl(fd_, FIONREAD, &waiting) != 0) return failTransfer();
        status->inQueue = static_cast<uint32_t>(waiting);
        int unsent = 0;
        if (sys().ioctl(fd_, TIOCOUTQ, &unsent) == 0) status->outQueue = static_cast<uint32_t>(unsent);
        // The line errors since the last look, where the driver counts them.
        serial_icounter_struct counts{};
        if (sys().ioctl(fd_, TIOCGICOUNT, &counts) == 0) {
            if (counts.buf_overrun != counts_.buf_overrun) status->errors |= 0x1;
            if (counts.overrun != counts_.overrun) status->errors |= 0x2;
            if (counts.parity != counts_.parity) status->errors |= 0x4;
            if (counts.frame != counts_.frame) status->errors |= 0x8;
            if (counts.brk != counts_.brk) status->errors |= 0x10;
            counts_ = counts;
        }
        return true;
    }

    bool modemStatus(uint32_t *bits) noexcept override
    {
        int lines = 0;
        if (sys().ioctl(fd_, TIOCMGET, &lines) != 0) return failTransfer();
        *bits = ((lines & TIOCM_CTS) != 0 ? kModemCts : 0) | ((lines & TIOCM_DSR) != 0 ? kModemDsr : 0) |
                ((lines & TIOCM_RNG) != 0 ? kModemRing : 0) | ((lines & TIOCM_CAR) != 0 ? kModemCarrier : 0);
        return true;
    }

    bool setBreak(bool on) noexcept override
    {
        return sys().ioctl(fd_, on ? TIOCSBRK : TIOCCBRK, nullptr) == 0 || failTransfer();
    }

    intptr_t systemHandle() const noexcept override { return fd_; }

    bool close() noexcept override
    {
        if (fd_ < 0) return true;
        if (watched_) posix::unwatchWriteDeadlines(this);
        watched_ = false;
        interrupt();
        sys().flock(fd_, LOCK_UN);
        const bool writeClosed = writeFd_ < 0 || sys().close(writeFd_) == 0 || errno == EINTR;
        const bool closed = sys().close(fd_) == 0 || errno == EINTR;
        fd_ = writeFd_ = -1;
        return (closed && writeClosed) || failTransfer();
    }

    bool watchDeadlines() noexcept
    {
        watched_ = posix::watchWriteDeadlines(this);
        if (!watched_) errno = ENOMEM;
        return watched_;
    }

private:
    // A driver that fixes its own character framing (a pseudo-terminal is
    // always 8 data bits without parity) refuses the request as a whole but
    // applies everything else; such a port is as usable as the caller asked.
    bool framingForcedByDriver(const termios &wanted) const noexcept
    {
        if (errno != EINVAL) return false;
        termios got{};
        if (sys().tcgetattr(fd_, &got) != 0) return false;
        constexpr tcflag_t kFraming = CSIZE | PARENB | PARODD | CMSPAR;
        const bool same =
            ((got.c_cflag ^ wanted.c_cflag) & ~kFraming & ~static_cast<tcflag_t>(CBAUD | CIBAUD)) == 0 &&
            got.c_iflag == wanted.c_iflag && got.c_oflag == wanted.c_oflag && got.c_lflag == wanted.c_lflag &&
            cfgetospeed(&got) == cfgetospeed(&wanted);
        errno = EINVAL;
        return same;
    }

    // Makes the blocked write return: on the deadline watcher's thread, or
    // on the thread that aborts it.
    void endBlockedWrite() noexcept
    {
        endingWrite_.store(true);
        if (writeFd_ < 0 || sys().fcntl(writeFd_, F_SETFL, O_NONBLOCK) != 0) return;
        const std::lock_guard<RecursiveLock> hold(attributesLock_);
        termios mode{};
        if (sys().tcgetattr(fd_, &mode) == 0) sys().tcsetattr(fd_, TCSANOW, &mode);
    }

    // Ends a write's deadline, whether it passed or not.
    struct DisarmAtEnd {
        explicit DisarmAtEnd(std::atomic<int64_t> &due) noexcept : due_(due) {}
        ~DisarmAtEnd() { due_.store(0); }
        DisarmAtEnd(const DisarmAtEnd &) = delete;
        DisarmAtEnd &operator=(const DisarmAtEnd &) = delete;

    private:
        std::atomic<int64_t> &due_;
    };

    int fd_;
    int writeFd_;
    bool pseudoTerminal_;
    bool watched_ = false;
    // Set before a blocked write is ended, so that the next write makes its
    // descriptor blocking again.
    std::atomic<bool> endingWrite_{false};
    // Held while the attributes are set, so that waking a write never puts
    // back attributes older than the ones just applied.
    RecursiveLock attributesLock_;
    std::atomic<uint64_t> abortGeneration_{0};
    // Counts the writes under way, first thing in each, before it reads the
    // generation: an abort that finds none cannot miss one.
    std::atomic<uint32_t> writesUnderWay_{0};
    struct WriteUnderWay {
        explicit WriteUnderWay(std::atomic<uint32_t> &count) noexcept : count_(count) { count_.fetch_add(1); }
        ~WriteUnderWay() { count_.fetch_sub(1); }
        WriteUnderWay(const WriteUnderWay &) = delete;
        WriteUnderWay &operator=(const WriteUnderWay &) = delete;

    private:
        std::atomic<uint32_t> &count_;
    };
    // The line was hung up (the device went away): empty reads are failures.
    std::atomic<bool> hungUp_{false};
    std::atomic<uint32_t> writeTimeoutMs_{0};
    uint32_t inQueue_ = 0;
    uint32_t outQueue_ = 0;
    serial_icounter_struct counts_{};
};

// The code of a failed open.
uint32_t openError(int error) noexcept
{
    switch (error) {
        case ENOENT:
        case ENOTDIR:
        case ENXIO:
        case ENODEV:
            return kSerialFileNotFound;
        case EACCES:
        case EPERM:
        case EBUSY:
        case EWOULDBLOCK:
            return kSerialAccessDenied;
        case ENOMEM:
            return kSerialNoMemory;
        case ENAMETOOLONG:
            return kSerialInvalidName;
        default:
            return kSerialOpenFailed;
    }
}

}  // namespace

std::unique_ptr<SerialPort> SerialPort::open(const char *devicePath) noexcept
{
    if (devicePath == nullptr) {
        errno = EINVAL;
        fail(kSerialInvalidName);
        return nullptr;
    }
    try {
        const std::string path = platform::devicePath(devicePath);
        int fd;
        do {
            fd = sys().open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC, 0);
        } while (fd < 0 && errno == EINTR);
        if (fd < 0) {
            fail(openError(errno));
            return nullptr;
        }
        termios mode{};
        // Not a terminal at all: no serial port there.
        bool usable = sys().tcgetattr(fd, &mode) == 0;
        if (!usable) errno = ENOTTY;
        // Exclusive: TIOCEXCL keeps out other opens (except root's); the
        // lock keeps out every other library user, root's too.
        if (usable && sys().flock(fd, LOCK_EX | LOCK_NB) != 0) usable = false;
        // The writing descriptor is opened before TIOCEXCL would refuse it,
        // non-blocking so that the open does not wait for a carrier.
        int writeFd = -1;
        if (usable) {
            do {
                writeFd = sys().open(path.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC, 0);
            } while (writeFd < 0 && errno == EINTR);
            usable = writeFd >= 0 && sys().fcntl(writeFd, F_SETFL, 0) == 0;
        }
        if (usable) sys().ioctl(fd, TIOCEXCL, nullptr);
        auto port = std::make_unique<PosixSerialPort>(fd, writeFd);
        if (!usable || !port->watchDeadlines()) {
            const int error = errno;
            port.reset();
            errno = error;
            fail(error == ENOTTY ? kSerialFileNotFound : openError(error));
            return nullptr;
        }
        lastError = kSerialNoError;
        return port;
    } catch (...) {
        errno = ENOMEM;
        fail(kSerialNoMemory);
        return nullptr;
    }
}

uint32_t lastSerialError() noexcept
{
    return lastError;
}

void setLastSerialError(uint32_t error) noexcept
{
    lastError = error;
    lastErrno = 0;
}

bool serialErrorText(uint32_t error, char *buffer, size_t size) noexcept
{
    if (buffer == nullptr || size == 0 || error == kSerialNoError) return false;
    // The text of the errno behind the thread's last failure.
    if (error == lastError && lastErrno != 0) {
        char scratch[256] = "";
        const char *text = strerror_r(lastErrno, scratch, sizeof scratch);
        std::snprintf(buffer, size, "%s", text != nullptr ? text : scratch);
        return true;
    }
    return false;
}

}  // namespace tollan::platform
