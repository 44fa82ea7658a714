#include "platform/posix/developer_prompt_terminal.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/system_calls.h"

namespace tollan::platform::posix {

PromptTerminal::PromptTerminal() noexcept
{
    int fd;
    do {
        fd = sys().open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC, 0);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) return;
    if (sys().tcgetattr(fd, &saved_) != 0) {
        sys().close(fd);
        return;
    }
    fd_ = fd;
}

PromptTerminal::~PromptTerminal()
{
    if (fd_ < 0) return;
    restore();
    sys().close(fd_);
}

bool writeAll(int fd, std::string_view text) noexcept
{
    while (!text.empty()) {
        const ssize_t put = sys().write(fd, text.data(), text.size());
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        text.remove_prefix(static_cast<size_t>(put));
    }
    return true;
}

bool PromptTerminal::apply(const termios &settings) noexcept
{
    int result;
    do {
        result = sys().tcsetattr(fd_, TCSANOW, &settings);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

bool PromptTerminal::keyMode() noexcept
{
    termios keys = saved_;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ISIG);
    keys.c_cc[VMIN] = 1;
    keys.c_cc[VTIME] = 0;
    changed_ = true;
    if (!apply(keys)) return false;
    discardInput();
    return true;
}

bool PromptTerminal::lineMode() noexcept
{
    termios lines = saved_;
    lines.c_lflag |= ICANON | ECHO;
    lines.c_iflag |= ICRNL;
    changed_ = true;
    return apply(lines);
}

bool PromptTerminal::restore() noexcept
{
    if (!changed_) return true;
    changed_ = !apply(saved_);
    return !changed_;
}

int PromptTerminal::readByte() noexcept
{
    unsigned char byte;
    ssize_t got;
    do {
        got = sys().read(fd_, &byte, 1);
    } while (got < 0 && errno == EINTR);
    return got == 1 ? byte : -1;
}

void PromptTerminal::discardInput() noexcept
{
    sys().tcflush(fd_, TCIFLUSH);
}

int PromptTerminal::signalOf(int key) const noexcept
{
    if ((saved_.c_lflag & ISIG) == 0 || key == _POSIX_VDISABLE) return 0;
    if (key == saved_.c_cc[VINTR]) return SIGINT;
    if (key == saved_.c_cc[VQUIT]) return SIGQUIT;
    if (key == saved_.c_cc[VSUSP]) return SIGTSTP;
    return 0;
}

bool PromptTerminal::isEndOfFile(int key) const noexcept
{
    return key != _POSIX_VDISABLE && key == saved_.c_cc[VEOF];
}

}  // namespace tollan::platform::posix
