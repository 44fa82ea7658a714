// The run-time error report's question on the controlling terminal, typed
// at for real through a pseudo-terminal.
#include <gtest/gtest.h>

#include <fcntl.h>

#include <atomic>
#include <csignal>
#include <string>
#include <thread>

#include "fixtures/system_call_faults.h"
#include "platform/developer_prompt.h"
#include "fixtures/terminal_child.h"

namespace {

using namespace tollan::platform;
using tollan::testing::TerminalChild;

constexpr std::string_view kChoiceLine = "[b] Break  [i] Ignore  [t] Terminate (Enter: Ignore)? ";

ReportQuestion question(
    ReportAnswer defaultChoice = ReportAnswer::ignore, const char *title = "Non-Fatal Run-time Error",
    const char *body = "File \"main.c\", line 12, column 5:\n\nDereference of null pointer.")
{
    return {title, body, 200, {"Break", "Ignore", "Terminate"}, defaultChoice};
}

int askInChild(ReportQuestion asked = question())
{
    return static_cast<int>(askReport(asked));
}

TEST(ReportPrompt, ShowsTheQuestionAndTakesOneKeyWithoutEcho)
{
    TerminalChild child([] { return askInChild(); });
    ASSERT_TRUE(child.waitFor(kChoiceLine)) << child.screen();
    EXPECT_NE(
        child.screen().find("\r\nNon-Fatal Run-time Error\r\nFile \"main.c\", line 12, column 5:\r\n\r\n"
                            "Dereference of null pointer.\r\n[b] Break"),
        std::string::npos)
        << child.screen();
    EXPECT_EQ(child.settings().c_lflag & (ICANON | ECHO), 0u) << "one key at a time, not shown";
    child.type("t");
    EXPECT_EQ(child.exitCode(), static_cast<int>(ReportAnswer::terminate));
}

TEST(ReportPrompt, EachKeyChoosesItsAnswerEnterTheDefaultAnyOtherKeyAsksAgain)
{
    const ReportAnswer ignore = ReportAnswer::ignore, terminate = ReportAnswer::terminate,
                       breakIn = ReportAnswer::breakIntoDebugger;
    const struct {
        const char *otherKey;  // typed first, to be asked again; or ""
        const char *key;
        ReportAnswer defaultChoice;
        ReportAnswer answer;
        const char *echoed;
    } cases[] = {
        {"", "b", ignore, breakIn, "Break"},
        {"", "B", ignore, breakIn, "Break"},
        {"", "i", terminate, ignore, "Ignore"},
        {"", "t", ignore, terminate, "Terminate"},
        {"", "\r", ignore, ignore, "Ignore"},
        {"", "\r", terminate, terminate, "Terminate"},
        {"", "\n", breakIn, breakIn, "Break"},
        {"x", "i", terminate, ignore, "Ignore"},
        {"\x1b[B", "i", terminate, ignore, "Ignore"},  // an arrow key: its B is no answer
        {"\xc3\xa9", "i", terminate, ignore, "Ignore"},
        {" ", "i", terminate, ignore, "Ignore"},
        {"\r", "b", ReportAnswer::nobodyToAsk, breakIn, "Break"},  // no default: Enter asks again
        {"", "\x04", ignore, ReportAnswer::nobodyToAsk, nullptr},  // the end-of-file key (Ctrl-D)
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(testing::Message() << "keys " << int(each.otherKey[0]) << " " << int(each.key[0])
                                        << ", default " << int(each.defaultChoice));
        TerminalChild child([&] { return askInChild(question(each.defaultChoice)); });
        ASSERT_TRUE(child.waitFor("? ")) << child.screen();
        if (*each.otherKey != '\0') {
            child.type(each.otherKey);
            ASSERT_TRUE(child.waitFor("? ", 2)) << child.screen();
        }
        child.type(each.key);
        if (each.echoed) {
            EXPECT_TRUE(child.waitFor(std::string("? ") + each.echoed + "\r\n")) << child.screen();
        }
        EXPECT_EQ(child.exitCode(), static_cast<int>(each.answer)) << "64: the settings were not restored";
    }
}

TEST(ReportPrompt, AHungUpTerminalLeavesNobodyToAsk)
{
    // A hang-up ends the program by SIGHUP unless it ignores that, as one
    // started with nohup does.
    TerminalChild child([] {
        signal(SIGHUP, SIG_IGN);
        return askInChild();
    });
    ASSERT_TRUE(child.waitFor(kChoiceLine));
    child.hangUp();
    // A hung-up terminal has no settings left to compare.
    EXPECT_EQ(child.exitCode() & ~TerminalChild::kSettingsChanged,
              static_cast<int>(ReportAnswer::nobodyToAsk));
}

TEST(DeveloperPrompt, WithoutAControllingTerminalNobodyIsAskedAndTheFatalMessageGoesToStandardError)
{
    int pipeEnds[2];
    ASSERT_EQ(pipe(pipeEnds), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        setsid();  // a new session has no controlling terminal
        alarm(20);
        dup2(pipeEnds[1], STDERR_FILENO);
        char path[64] = "unchanged";
        const bool none = askReport(question()) == ReportAnswer::nobodyToAsk && !askRetryStart("t", "x") &&
                          !askProgramPath("zor.exe", path, sizeof path) &&
                          std::string_view(path) == "unchanged";
        showFatalMessage("Fatal Run-time Error", "Program will be aborted.");
        _exit(none ? 0 : 1);
    }
    close(pipeEnds[1]);
    std::string said;
    char buffer[256];
    for (ssize_t got; (got = read(pipeEnds[0], buffer, sizeof buffer)) > 0;)
        said.append(buffer, static_cast<size_t>(got));
    close(pipeEnds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(said, "\nFatal Run-time Error\nProgram will be aborted.\n");
}

TEST(ReportPrompt, AnErrorOnTheTerminalLeavesNobodyToAskAndTheSettingsAsTheyWere)
{
    using tollan::testing::SystemCall;
    using tollan::testing::SystemCallFaults;
    const struct {
        SystemCall call;
        int error;
        int times;
        ReportAnswer answer;
    } cases[] = {
        {SystemCall::read, EIO, 1, ReportAnswer::nobodyToAsk},
        {SystemCall::write, EIO, 1, ReportAnswer::nobodyToAsk},
        {SystemCall::tcgetattr, ENOTTY, 1, ReportAnswer::nobodyToAsk},
        // Interrupted reads and settings are tried again.
        {SystemCall::read, EINTR, 3, ReportAnswer::breakIntoDebugger},
        {SystemCall::tcsetattr, EINTR, 2, ReportAnswer::breakIntoDebugger},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(testing::Message() << "call " << int(each.call) << ", errno " << each.error);
        TerminalChild child([&] {
            SystemCallFaults faults("/dev/tty");
            faults.fail(each.call, each.error, {.times = each.times});
            return askInChild();
        });
        if (each.answer == ReportAnswer::breakIntoDebugger) {
            ASSERT_TRUE(child.waitFor(kChoiceLine)) << child.screen();
            child.type("b");
        }
        EXPECT_EQ(child.exitCode(), static_cast<int>(each.answer)) << "64: the settings were not restored";
    }
}

std::atomic<bool> signalled{false};

TEST(ReportPrompt, TheInterruptKeyInterruptsOnTheTerminalAsItWas)
{
    {
        // The program's handler runs and the question is asked again: a
        // signal that interrupts the wait is no answer.
        TerminalChild child([] {
            struct sigaction handler {};
            handler.sa_handler = [](int) { signalled = true; };
            sigaction(SIGINT, &handler, nullptr);
            const int answer = askInChild();
            return signalled ? answer : 99;
        });
        ASSERT_TRUE(child.waitFor(kChoiceLine));
        child.type("\x03");
        ASSERT_TRUE(child.waitFor(kChoiceLine, 2)) << child.screen();
        child.type("i");
        EXPECT_EQ(child.exitCode(), static_cast<int>(ReportAnswer::ignore));
    }
    // Without a handler the program ends, and the terminal is as it was.
    TerminalChild child([] { return askInChild(); });
    ASSERT_TRUE(child.waitFor(kChoiceLine));
    child.type("\x03");
    EXPECT_EQ(child.exitCode(), 128 + SIGINT);
    EXPECT_EQ(child.settings().c_lflag & (ICANON | ECHO | ISIG), static_cast<tcflag_t>(ICANON | ECHO | ISIG));
}

TEST(ReportPrompt, TwoThreadsAskOneAfterTheOther)
{
    TerminalChild child([] {
        std::atomic<int> first{-1};
        std::atomic<int> second{-1};
        std::thread one([&] { first = askInChild(question(ReportAnswer::ignore, "First", "one")); });
        std::thread two([&] { second = askInChild(question(ReportAnswer::ignore, "Second", "two")); });
        one.join();
        two.join();
        return first * 4 + second;
    });
    ASSERT_TRUE(child.waitFor(kChoiceLine)) << child.screen();
    usleep(100 * 1000);  // the other thread has long reached its question
    const bool firstFirst = child.screen().find("First") != std::string::npos;
    EXPECT_EQ(child.screen().find(firstFirst ? "Second" : "First"), std::string::npos) << child.screen();
    child.type("i");
    ASSERT_TRUE(child.waitFor(kChoiceLine, 2)) << child.screen();
    child.type("t");
    ASSERT_TRUE(child.waitFor("? Terminate\r\n"));
    const auto block = [](const char *title, const char *body, const char *answer) {
        return std::string("\r\n") + title + "\r\n" + body + "\r\n" + std::string(kChoiceLine) + answer +
               "\r\n";
    };
    const std::string expected = firstFirst
                                     ? block("First", "one", "Ignore") + block("Second", "two", "Terminate")
                                     : block("Second", "two", "Ignore") + block("First", "one", "Terminate");
    EXPECT_EQ(child.screen(), expected);
    const int ignore = static_cast<int>(ReportAnswer::ignore);
    const int terminate = static_cast<int>(ReportAnswer::terminate);
    EXPECT_EQ(child.exitCode(), firstFirst ? ignore * 4 + terminate : terminate * 4 + ignore);
}

}  // namespace
