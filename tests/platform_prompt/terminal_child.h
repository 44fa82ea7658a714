// A child process whose controlling terminal, standard input and output is a
// pseudo-terminal: the test reads its screen and types at it on the other end.
#pragma once

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <string>
#include <string_view>

namespace tollan::testing {

class TerminalChild {
public:
    // The child's exit code has this bit when the terminal's settings after
    // `body` differ from those before it.
    static constexpr int kSettingsChanged = 64;

    // Runs `body` in the child, whose exit code is body's result.
    explicit TerminalChild(const std::function<int()> &body)
    {
        pid_ = forkpty(&master_, nullptr, nullptr, nullptr);
        if (pid_ != 0) return;
        alarm(20);  // a question nobody answers must not hang the test
        termios before{}, after{};
        tcgetattr(STDIN_FILENO, &before);
        int code = body();
        tcgetattr(STDIN_FILENO, &after);
        if (!sameSettings(before, after)) code |= kSettingsChanged;
        _exit(code);
    }
    ~TerminalChild()
    {
        if (pid_ > 0 && status_ < 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        if (master_ >= 0) close(master_);
    }
    TerminalChild(const TerminalChild &) = delete;
    TerminalChild &operator=(const TerminalChild &) = delete;

    // Reads the screen until `text` has shown `times` times in all, for at
    // most 5 s.
    bool waitFor(std::string_view text, int times = 1)
    {
        for (;;) {
            if (count(text) >= times) return true;
            pollfd wait{master_, POLLIN, 0};
            if (poll(&wait, 1, 5000) <= 0) return false;
            char buffer[1024];
            const ssize_t got = read(master_, buffer, sizeof buffer);
            if (got <= 0) return count(text) >= times;
            screen_.append(buffer, static_cast<size_t>(got));
        }
    }
    const std::string &screen() const { return screen_; }
    void type(std::string_view keys) { (void)!write(master_, keys.data(), keys.size()); }
    void hangUp()
    {
        close(master_);
        master_ = -1;
    }
    termios settings() const
    {
        termios now{};
        tcgetattr(master_, &now);
        return now;
    }

    // The child's exit code, or 128 + the signal that ended it.
    int exitCode()
    {
        if (status_ < 0) {
            int status = 0;
            while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
            }
            status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        return status_;
    }

private:
    static bool sameSettings(const termios &a, const termios &b)
    {
        return a.c_iflag == b.c_iflag && a.c_oflag == b.c_oflag && a.c_lflag == b.c_lflag &&
               a.c_cflag == b.c_cflag && a.c_cc[VMIN] == b.c_cc[VMIN] && a.c_cc[VTIME] == b.c_cc[VTIME];
    }
    int count(std::string_view text) const
    {
        int found = 0;
        for (size_t at = screen_.find(text); at != std::string::npos;
             at = screen_.find(text, at + text.size()))
            ++found;
        return found;
    }

    int master_ = -1;
    pid_t pid_ = -1;
    int status_ = -1;
    std::string screen_;
};

}  // namespace tollan::testing
