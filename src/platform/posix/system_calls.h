// The POSIX backend's system calls, reached through one replaceable table.
// Files, serial devices, the debugger's channel and the questions asked on
// the terminal go through it.
// Tests put a table of their own in place to produce what a disk or a device
// produces and a test machine does not: EIO, ENOSPC, EINTR and EAGAIN at any
// call, a device that vanishes, a short write.
//
// A call costs one acquire load of the table pointer (a plain load on the
// processors we build for) and an indirect call.
#pragma once

#include <atomic>
#include <cstddef>
#include <poll.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <termios.h>

namespace tollan::platform::posix {

struct SystemCalls {
    // open(2) with the mode always given.
    int (*open)(const char *path, int flags, mode_t mode);
    int (*close)(int fd);
    ssize_t (*read)(int fd, void *buffer, size_t count);
    ssize_t (*write)(int fd, const void *buffer, size_t count);
    off_t (*lseek)(int fd, off_t offset, int whence);
    int (*fsync)(int fd);
    int (*fstat)(int fd, struct stat *status);
    int (*stat)(const char *path, struct stat *status);
    // access(2): whether the caller may read, write or run a file.
    int (*access)(const char *path, int mode);
    // fcntl(2) for the commands that take an int argument or none.
    int (*fcntl)(int fd, int command, int argument);
    // send(2), for sockets: with MSG_NOSIGNAL a vanished peer is an error
    // (EPIPE), never a signal.
    ssize_t (*send)(int fd, const void *buffer, size_t count, int flags);
    // Serial devices.
    int (*poll)(struct pollfd *fds, nfds_t count, int timeoutMs);
    // ioctl(2) for the requests that take a pointer (or nothing).
    int (*ioctl)(int fd, unsigned long request, void *argument);
    int (*tcgetattr)(int fd, struct termios *settings);
    int (*tcsetattr)(int fd, int when, const struct termios *settings);
    int (*tcflush)(int fd, int queue);
    int (*tcflow)(int fd, int action);
    int (*flock)(int fd, int operation);
    int (*unlink)(const char *path);
    // rename(2) that refuses (EEXIST) to replace an existing target.
    int (*renameNoReplace)(const char *from, const char *to);
};

// The table of the system's own calls.
const SystemCalls &realSystemCalls() noexcept;

namespace detail {
extern std::atomic<const SystemCalls *> currentSystemCalls;
}

// The table in use; every system call of the backend goes through it.
inline const SystemCalls &sys() noexcept
{
    return *detail::currentSystemCalls.load(std::memory_order_acquire);
}

// Puts `table` (null: the real calls) in use and returns the table it
// replaces. The caller keeps `table` alive until it is replaced again and no
// call can still be running through it.
const SystemCalls *replaceSystemCalls(const SystemCalls *table) noexcept;

}  // namespace tollan::platform::posix
