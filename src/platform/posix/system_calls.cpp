#include "platform/posix/system_calls.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tollan::platform::posix {
namespace {

int openWithMode(const char *path, int flags, mode_t mode)
{
    return ::open(path, flags, mode);
}

int fcntlWithInt(int fd, int command, int argument)
{
    return ::fcntl(fd, command, argument);
}

int ioctlWithPointer(int fd, unsigned long request, void *argument)
{
    return ::ioctl(fd, request, argument);
}

// renameat2's RENAME_NOREPLACE where the file system has it; elsewhere a
// check for the target first, which a racing creator can slip past.
int renameNoReplace(const char *from, const char *to)
{
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return -1;
    struct stat status {};
    if (::lstat(to, &status) == 0) {
        errno = EEXIST;
        return -1;
    }
    return ::rename(from, to);
}

constexpr SystemCalls kReal = {
    .open = openWithMode,
    .close = ::close,
    .read = ::read,
    .write = ::write,
    .lseek = ::lseek,
    .fsync = ::fsync,
    .fstat = ::fstat,
    .stat = ::stat,
    .access = ::access,
    .fcntl = fcntlWithInt,
    .send = ::send,
    .poll = ::poll,
    .ioctl = ioctlWithPointer,
    .tcgetattr = ::tcgetattr,
    .tcsetattr = ::tcsetattr,
    .tcflush = ::tcflush,
    .tcflow = ::tcflow,
    .flock = ::flock,
    .unlink = ::unlink,
    .renameNoReplace = renameNoReplace,
};

}  // namespace

namespace detail {
constinit std::atomic<const SystemCalls *> currentSystemCalls{&kReal};
}

const SystemCalls &realSystemCalls() noexcept
{
    return kReal;
}

const SystemCalls *replaceSystemCalls(const SystemCalls *table) noexcept
{
    return detail::currentSystemCalls.exchange(table != nullptr ? table : &kReal);
}

}  // namespace tollan::platform::posix
