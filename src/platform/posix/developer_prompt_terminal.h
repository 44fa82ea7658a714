// The controlling terminal, open for one question to the developer. The
// settings it had when it was opened come back when it closes, whatever
// mode the question switched it to.
#pragma once

#include <string_view>
#include <termios.h>

namespace tollan::platform::posix {

// Writes all of `text` to `fd` through the system-call table, retried on
// EINTR; false on an error.
bool writeAll(int fd, std::string_view text) noexcept;

class PromptTerminal {
public:
    // Opens /dev/tty; isOpen() is false when the process has no controlling
    // terminal.
    PromptTerminal() noexcept;
    ~PromptTerminal();
    PromptTerminal(const PromptTerminal &) = delete;
    PromptTerminal &operator=(const PromptTerminal &) = delete;

    bool isOpen() const noexcept { return fd_ >= 0; }
    int descriptor() const noexcept { return fd_; }

    bool write(std::string_view text) noexcept { return writeAll(fd_, text); }

    // One key at a time, without echo, and with the keys that send signals
    // delivered as keys (signalOf tells which). What was typed before the
    // switch is thrown away: a key pressed before the question showed must
    // not answer it.
    bool keyMode() noexcept;
    // A line at a time, with echo, Enter ending the line.
    bool lineMode() noexcept;
    // The settings the terminal was opened with.
    bool restore() noexcept;

    // The next byte typed; -1 at end of file (the terminal hung up) or on an
    // error.
    int readByte() noexcept;
    // Throws away what was typed and not read yet.
    void discardInput() noexcept;

    // The signal that `key` sends in the terminal's own settings (0: none).
    int signalOf(int key) const noexcept;
    // Whether `key` is the terminal's end-of-file key.
    bool isEndOfFile(int key) const noexcept;

private:
    bool apply(const termios &settings) noexcept;

    int fd_ = -1;
    termios saved_{};
    bool changed_ = false;
};

}  // namespace tollan::platform::posix
