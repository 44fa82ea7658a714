// Asking the developer at the machine: the run-time error report's three
// choices, and the questions around starting the development environment.
// Windows shows dialogs and message boxes; POSIX asks on the controlling
// terminal (/dev/tty), one key per answer, and has nobody to ask without one.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tollan::platform {

enum class ReportAnswer {
    breakIntoDebugger,
    ignore,
    terminate,
    nobodyToAsk,  // no terminal (POSIX): the caller answers for the developer
    cannotShow    // the dialog could not be made (Windows)
};

struct ReportQuestion {
    const char *title;
    // The body; the Windows dialog shows at most bodyLimit - 1 bytes of it.
    const char *body;
    size_t bodyLimit;
    // Labels of the break, ignore and terminate choices, in that order.
    const char *choices[3];
    // The choice an empty answer (Enter) takes.
    ReportAnswer defaultChoice;
};

// Shows the question and waits for the answer. Only the calling thread waits.
ReportAnswer askReport(const ReportQuestion &question) noexcept;

// The development environment could not be started: offers to try again.
// True for "retry"; false for "cancel" and when nobody can be asked.
bool askRetryStart(const char *title, const char *text) noexcept;

// Asks where the development environment's program is (Windows: a file-open
// dialog with defaultName, path and file must exist; POSIX: a line typed on
// the terminal). True with the path, terminated, in path (of size bytes).
bool askProgramPath(const char *defaultName, char *path, size_t size) noexcept;

// A last word before the process ends: a message box with a stop icon
// (Windows); on POSIX the terminal, else standard error.
void showFatalMessage(const char *title, const char *text) noexcept;

}  // namespace tollan::platform
