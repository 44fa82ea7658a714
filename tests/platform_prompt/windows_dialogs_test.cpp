// The dialogs and message boxes for real (Windows only). A clicker thread
// presses a button of whatever window the asking thread shows, so that no
// call waits for a person; where there is no display (Wine in CI) the calls
// return at once without showing anything.
#ifdef _WIN32
#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <thread>

#include "platform/developer_prompt.h"

namespace {

using namespace tollan::platform;

class Clicker {
public:
    // Presses button `id` in the first visible window of the calling thread.
    explicit Clicker(int id) : asker_(GetCurrentThreadId()), id_(id), worker_([this] { run(); }) {}
    ~Clicker()
    {
        done_ = true;
        worker_.join();
    }
    bool clicked() const { return clicked_; }

private:
    void run()
    {
        while (!done_) {
            HWND shown = nullptr;
            EnumThreadWindows(
                asker_,
                [](HWND window, LPARAM found) -> BOOL {
                    if (!IsWindowVisible(window)) return TRUE;
                    *reinterpret_cast<HWND *>(found) = window;
                    return FALSE;
                },
                reinterpret_cast<LPARAM>(&shown));
            if (shown != nullptr) {
                // Marked first: the asker may return before the post does.
                clicked_ = true;
                PostMessageA(shown, WM_COMMAND, MAKEWPARAM(id_, BN_CLICKED), 0);
            }
            Sleep(50);
        }
    }

    DWORD asker_;
    int id_;
    std::atomic<bool> done_{false};
    std::atomic<bool> clicked_{false};
    std::thread worker_;
};

TEST(WindowsDialogs, TheReportDialogAnswersWithTheButtonPressedOrCannotBeShown)
{
    const ReportQuestion question{"Non-Fatal Run-time Error",
                                  "File \"main.c\", line 12, column 5:\n\nDereference of null pointer.",
                                  200,
                                  {"Break", "Ignore", "Terminate"},
                                  ReportAnswer::ignore};
    const struct {
        int button;
        ReportAnswer answer;
    } presses[] = {{1000, ReportAnswer::breakIntoDebugger},
                   {1001, ReportAnswer::ignore},
                   {1002, ReportAnswer::terminate}};
    for (const auto &press : presses) {
        Clicker clicker(press.button);
        const ReportAnswer answer = askReport(question);
        const ReportAnswer expected = clicker.clicked() ? press.answer : ReportAnswer::cannotShow;
        EXPECT_EQ(answer, expected) << press.button;
    }
}

TEST(WindowsDialogs, TheRetryBoxIsTrueForRetryOnly)
{
    {
        Clicker clicker(IDRETRY);
        const bool retry = askRetryStart("Fatal Run-time Error", "Unable to launch ZOR environment.");
        EXPECT_EQ(retry, clicker.clicked());
    }
    Clicker clicker(IDCANCEL);
    EXPECT_FALSE(askRetryStart("Fatal Run-time Error", "Unable to launch ZOR environment."));
}

TEST(WindowsDialogs, ACancelledFileDialogGivesNoPath)
{
    Clicker clicker(IDCANCEL);
    char path[MAX_PATH] = "unchanged";
    EXPECT_FALSE(askProgramPath("zor.exe", path, sizeof path));
    EXPECT_FALSE(askProgramPath("zor.exe", path, 4)) << "the default name does not fit";
}

TEST(WindowsDialogs, TheFatalMessageReturnsOnceClosed)
{
    Clicker clicker(IDOK);
    showFatalMessage("Fatal Run-time Error", "Unrecoverable Internal Error.\nProgram will be aborted.");
}

}  // namespace
#endif
