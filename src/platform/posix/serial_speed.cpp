// Kept apart: the kernel's termios2 definitions clash with the C library's
// termios header.
#include "platform/posix/serial_speed.h"

#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace tollan::platform::posix {

bool setAnySpeed(int fd, int baud) noexcept
{
    struct termios2 settings {};
    if (ioctl(fd, TCGETS2, &settings) != 0) return false;
    settings.c_cflag &= ~static_cast<tcflag_t>(CBAUD);
    settings.c_cflag |= BOTHER;
    settings.c_cflag &= ~static_cast<tcflag_t>(CIBAUD);
    settings.c_cflag |= BOTHER << IBSHIFT;
    settings.c_ispeed = static_cast<speed_t>(baud);
    settings.c_ospeed = static_cast<speed_t>(baud);
    return ioctl(fd, TCSETS2, &settings) == 0;
}

bool anySpeed(int fd, int *baud) noexcept
{
    struct termios2 settings {};
    if (ioctl(fd, TCGETS2, &settings) != 0) return false;
    *baud = static_cast<int>(settings.c_ospeed);
    return true;
}

}  // namespace tollan::platform::posix
