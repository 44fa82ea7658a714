// Asking the developer at the machine: the run-time error report's three
// choices, and the questions around starting the development environment.
// Windows shows dialogs and message boxes; POSIX asks on the controlling
// terminal (/dev/tty), one key per answer, and has nobody to ask without one.
// On POSIX one question is asked at a time: a thread that asks while another
// thread's question is open waits until it is answered, so the lines of two
// questions never mix on the terminal. Windows shows each thread's dialog at
// once. Every call waits only in the calling thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tollan::platform {

enum class ReportAnswer {
    breakIntoDebugger,
    ignore,
    terminate,
    nobodyToAsk,  // no terminal, or it ended (POSIX): the caller answers for the developer
    cannotShow    // the dialog could not be made (Windows)
};

struct ReportQuestion {
    const char *title;
    // The body; at most bodyLimit - 1 bytes of it are shown (none when
    // bodyLimit is 0).
    const char *body;
    size_t bodyLimit;
    // Labels of the break, ignore and terminate choices, in that order.
    const char *choices[3];
    // The choice an empty answer (Enter) takes; when it is none of the three
    // choices, Enter chooses nothing.
    ReportAnswer defaultChoice;
};

// The part of the body that is shown; a null body is empty.
inline std::string_view shownBody(const ReportQuestion &question) noexcept
{
    if (question.body == nullptr || question.bodyLimit == 0) return {};
    std::string_view body(question.body);
    return body.substr(0, question.bodyLimit - 1);
}

// The label of choice `index` (0 break, 1 ignore, 2 terminate); a null label
// is the choice's English name.
inline const char *choiceLabel(const ReportQuestion &question, size_t index) noexcept
{
    constexpr const char *kNames[3] = {"Break", "Ignore", "Terminate"};
    return question.choices[index] != nullptr ? question.choices[index] : kNames[index];
}

// Shows the question and waits for the answer. Only the calling thread waits.
ReportAnswer askReport(const ReportQuestion &question) noexcept;

// The development environment could not be started: offers to try again.
// True for "retry"; false for "cancel" and when nobody can be asked.
bool askRetryStart(const char *title, const char *text) noexcept;

// Asks where the development environment's program is (Windows: a file-open
// dialog with defaultName, path and file must exist; POSIX: a line typed on
// the terminal, naming an existing executable file). True with the path,
// terminated, in path (of size bytes); false when the developer gives none
// or nobody can be asked, path then unchanged on POSIX.
bool askProgramPath(const char *defaultName, char *path, size_t size) noexcept;

// A last word before the process ends: a message box with a stop icon
// (Windows); on POSIX the terminal, else standard error.
void showFatalMessage(const char *title, const char *text) noexcept;

}  // namespace tollan::platform
