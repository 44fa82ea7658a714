// Asking the developer on the controlling terminal: the question, then one
// key (or, for a path, one line) as the answer. Without a terminal nobody is
// asked, and the callers decide for the developer.
#include "platform/developer_prompt.h"

#include <climits>
#include <csignal>
#include <cstring>
#include <mutex>
#include <span>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/developer_prompt_terminal.h"
#include "platform/posix/system_calls.h"

namespace tollan::platform {
using posix::PromptTerminal;
using posix::sys;

namespace {

// One question at a time on the terminal, whichever thread asks.
std::mutex questionLock;

struct KeyChoice {
    char key;  // lower case; its upper case chooses it too
    std::string_view word;
};

constexpr int kNoChoice = -1;
constexpr int kEnoughTries = 3;

std::string_view textOf(const char *text)
{
    return text != nullptr ? std::string_view(text) : std::string_view();
}

// A blank line, the title, and the text, ending with a line end.
bool writeQuestion(int fd, std::string_view title, std::string_view text)
{
    const bool ended = !text.empty() && text.back() == '\n';
    for (std::string_view part : {std::string_view("\n"), title, std::string_view("\n"), text})
        if (!posix::writeAll(fd, part)) return false;
    return ended || posix::writeAll(fd, "\n");
}

// "[b] Break  [i] Ignore  [t] Terminate (Enter: Ignore)? "
bool writeChoices(PromptTerminal &terminal, std::span<const KeyChoice> choices, int defaultIndex)
{
    for (size_t i = 0; i < choices.size(); ++i) {
        const char key[] = {'[', choices[i].key, ']', ' '};
        if (!terminal.write(i == 0 ? "" : "  ") || !terminal.write({key, sizeof key}) ||
            !terminal.write(choices[i].word))
            return false;
    }
    if (defaultIndex != kNoChoice &&
        !(terminal.write(" (Enter: ") && terminal.write(choices[static_cast<size_t>(defaultIndex)].word) &&
          terminal.write(")")))
        return false;
    return terminal.write("? ");
}

int choiceOf(int key, std::span<const KeyChoice> choices, int defaultIndex)
{
    if (key == '\n' || key == '\r') return defaultIndex;
    for (size_t i = 0; i < choices.size(); ++i)
        if (key == choices[i].key || key == choices[i].key - 'a' + 'A') return static_cast<int>(i);
    return kNoChoice;
}

// Offers `choices` and reads keys until one chooses; echoes the choice's
// word. Any other key asks again. A key that sends a signal sends it, on the
// terminal as it was, and a process that lives on is asked again. Returns
// the choice's index, or kNoChoice at the terminal's end.
int askKey(PromptTerminal &terminal, std::span<const KeyChoice> choices, int defaultIndex)
{
    for (;;) {
        if (!terminal.keyMode() || !writeChoices(terminal, choices, defaultIndex)) return kNoChoice;
        const int key = terminal.readByte();
        if (key < 0 || terminal.isEndOfFile(key)) {
            terminal.write("\n");
            return kNoChoice;
        }
        const int chosen = choiceOf(key, choices, defaultIndex);
        if (chosen != kNoChoice) {
            terminal.write(choices[static_cast<size_t>(chosen)].word);
            terminal.write("\n");
            return chosen;
        }
        terminal.write("\n");
        if (const int signal = terminal.signalOf(key); signal != 0) {
            terminal.restore();
            ::raise(signal);
        }
    }
}

enum class LineRead { line, tooLong, ended };

// Reads one line, without its line end, into `line` (of `size` bytes).
LineRead readLine(PromptTerminal &terminal, char *line, size_t size)
{
    size_t length = 0;
    bool fits = true;
    for (;;) {
        const int byte = terminal.readByte();
        if (byte < 0) return LineRead::ended;
        if (byte == '\n') break;
        if (length + 1 < size)
            line[length++] = static_cast<char>(byte);
        else
            fits = false;
    }
    line[length] = '\0';
    return fits ? LineRead::line : LineRead::tooLong;
}

bool isProgram(const char *path)
{
    struct stat status {};
    return sys().stat(path, &status) == 0 && S_ISREG(status.st_mode) && sys().access(path, X_OK) == 0;
}

}  // namespace

ReportAnswer askReport(const ReportQuestion &question) noexcept
{
    std::lock_guard hold(questionLock);
    PromptTerminal terminal;
    if (!terminal.isOpen() ||
        !writeQuestion(terminal.descriptor(), textOf(question.title), shownBody(question)))
        return ReportAnswer::nobodyToAsk;
    const KeyChoice choices[] = {
        {'b', choiceLabel(question, 0)}, {'i', choiceLabel(question, 1)}, {'t', choiceLabel(question, 2)}};
    const int defaultIndex = question.defaultChoice <= ReportAnswer::terminate
                                 ? static_cast<int>(question.defaultChoice)
                                 : kNoChoice;
    const int chosen = askKey(terminal, choices, defaultIndex);
    return chosen == kNoChoice ? ReportAnswer::nobodyToAsk : static_cast<ReportAnswer>(chosen);
}

bool askRetryStart(const char *title, const char *text) noexcept
{
    std::lock_guard hold(questionLock);
    PromptTerminal terminal;
    if (!terminal.isOpen() || !writeQuestion(terminal.descriptor(), textOf(title), textOf(text)))
        return false;
    constexpr KeyChoice kChoices[] = {{'r', "Retry"}, {'c', "Cancel"}};
    return askKey(terminal, kChoices, 1) == 0;
}

bool askProgramPath(const char *defaultName, char *path, size_t size) noexcept
{
    if (path == nullptr || size == 0) return false;
    std::lock_guard hold(questionLock);
    PromptTerminal terminal;
    if (!terminal.isOpen()) return false;
    for (int tries = 0; tries < kEnoughTries; ++tries) {
        if (!terminal.lineMode() || !terminal.write("Path of the development environment (default name ") ||
            !terminal.write(textOf(defaultName)) || !terminal.write("): "))
            return false;
        char line[PATH_MAX];
        const LineRead read = readLine(terminal, line, sizeof line);
        if (read == LineRead::ended) {
            terminal.write("\n");
            return false;
        }
        if (read == LineRead::line && line[0] == '\0') return false;
        const size_t length = std::strlen(line);
        if (read == LineRead::tooLong || length >= size) {
            terminal.write("The path is too long.\n");
        } else if (!isProgram(line)) {
            terminal.write(line);
            terminal.write(" is not an executable file.\n");
        } else {
            std::memcpy(path, line, length + 1);
            return true;
        }
    }
    return false;
}

void showFatalMessage(const char *title, const char *text) noexcept
{
    std::lock_guard hold(questionLock);
    PromptTerminal terminal;
    if (terminal.isOpen() && writeQuestion(terminal.descriptor(), textOf(title), textOf(text))) return;
    writeQuestion(STDERR_FILENO, textOf(title), textOf(text));
}

}  // namespace tollan::platform
