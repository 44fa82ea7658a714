#include "platform/posix/system_calls.h"

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

constexpr SystemCalls kReal = {
    .open = openWithMode,
    .close = ::close,
    .read = ::read,
    .write = ::write,
    .lseek = ::lseek,
    .fsync = ::fsync,
    .fstat = ::fstat,
    .stat = ::stat,
    .fcntl = fcntlWithInt,
    .send = ::send,
    .poll = ::poll,
    .ioctl = ioctlWithPointer,
    .tcgetattr = ::tcgetattr,
    .tcsetattr = ::tcsetattr,
    .tcflush = ::tcflush,
    .tcflow = ::tcflow,
    .flock = ::flock,
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
