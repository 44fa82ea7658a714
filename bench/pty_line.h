// Pseudo-terminal pairs for the serial benchmarks, and the plain way to talk
// through their terminal ends that the library is compared with.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>

namespace bench {

// One pseudo-terminal pair: the controlling end stays here (non-blocking,
// raw); the terminal end is opened by its path by whoever uses it. With
// `holdTerminal`, a descriptor of the terminal end is held open as well, so
// that the pair does not hang up before a program opens it or after the
// program exits.
class Pty {
public:
    explicit Pty(bool holdTerminal = false)
    {
        master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0 ||
            ptsname_r(master_, name_, sizeof name_) != 0) {
            close();
            return;
        }
        termios raw{};
        if (tcgetattr(master_, &raw) == 0) {
            cfmakeraw(&raw);
            tcsetattr(master_, TCSANOW, &raw);
        }
        fcntl(master_, F_SETFL, fcntl(master_, F_GETFL) | O_NONBLOCK);
        if (!holdTerminal) return;
        held_ = ::open(name_, O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (held_ < 0 || tcgetattr(held_, &raw) != 0) {
            close();
            return;
        }
        cfmakeraw(&raw);
        tcsetattr(held_, TCSANOW, &raw);
    }
    ~Pty() { close(); }
    Pty(const Pty &) = delete;
    Pty &operator=(const Pty &) = delete;

    bool ok() const { return master_ >= 0; }
    int master() const { return master_; }
    const char *device() const { return name_; }

private:
    void close()
    {
        if (held_ >= 0) ::close(held_);
        if (master_ >= 0) ::close(master_);
        held_ = master_ = -1;
    }
    int master_ = -1;
    int held_ = -1;
    char name_[128] = "";
};

// The terminal end opened directly, blocking, raw, a read returning as soon
// as one byte is there: the plain way to talk to a serial device.
inline int openPlainTerminal(const char *device)
{
    const int fd = ::open(device, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return -1;
    termios raw{};
    if (tcgetattr(fd, &raw) != 0) {
        ::close(fd);
        return -1;
    }
    cfmakeraw(&raw);
    cfsetispeed(&raw, B115200);
    cfsetospeed(&raw, B115200);
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    if (tcsetattr(fd, TCSANOW, &raw) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

// All of `count` bytes through a blocking descriptor; false when it fails.
inline bool plainWrite(int fd, const unsigned char *bytes, size_t count)
{
    while (count > 0) {
        const ssize_t n = ::write(fd, bytes, count);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        bytes += n;
        count -= static_cast<size_t>(n);
    }
    return true;
}

inline bool plainRead(int fd, unsigned char *buffer, size_t count)
{
    while (count > 0) {
        const ssize_t n = ::read(fd, buffer, count);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        buffer += n;
        count -= static_cast<size_t>(n);
    }
    return true;
}

inline bool waitFor(int fd, short events, int timeoutMs)
{
    pollfd wait{fd, events, 0};
    int ready;
    do {
        ready = ::poll(&wait, 1, timeoutMs);
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

}  // namespace bench
