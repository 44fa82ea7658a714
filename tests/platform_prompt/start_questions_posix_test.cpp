// The questions around starting the development environment and the fatal
// message, on the controlling terminal of a child that the test types at.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include "fixtures/scratch_folder.h"
#include "platform/developer_prompt.h"
#include "fixtures/terminal_child.h"

namespace {

using namespace tollan::platform;
using tollan::testing::ScratchFolder;
using tollan::testing::TerminalChild;

constexpr std::string_view kRetryLine = "[r] Retry  [c] Cancel (Enter: Cancel)? ";
constexpr std::string_view kPathLine = "Path of the development environment (default name zor.exe): ";

TEST(RetryPrompt, RetriesOnROnly)
{
    const struct {
        const char *unknownFirst;  // a key that makes the question come again, or none
        const char *key;
        bool retry;
        const char *echoed;
    } cases[] = {{"", "r", true, "Retry"},   {"", "R", true, "Retry"},    {"", "c", false, "Cancel"},
                 {"", "C", false, "Cancel"}, {"", "\r", false, "Cancel"}, {"x", "r", true, "Retry"}};
    for (const auto &each : cases) {
        SCOPED_TRACE(each.key);
        TerminalChild child([] {
            return askRetryStart("Fatal Run-time Error", "Unable to launch ZOR environment.") ? 1 : 0;
        });
        ASSERT_TRUE(child.waitFor(kRetryLine)) << child.screen();
        EXPECT_NE(child.screen().find("Fatal Run-time Error\r\nUnable to launch ZOR environment.\r\n"),
                  std::string::npos);
        if (*each.unknownFirst != '\0') {
            child.type(each.unknownFirst);
            ASSERT_TRUE(child.waitFor(kRetryLine, 2)) << child.screen();
        }
        child.type(each.key);
        EXPECT_TRUE(child.waitFor(std::string("? ") + each.echoed + "\r\n")) << child.screen();
        EXPECT_EQ(child.exitCode(), each.retry ? 1 : 0) << "64: the settings were not restored";
    }
}

// Asks for the path in a child that prints the answer on its terminal.
TerminalChild askPathInChild(size_t size = 4096)
{
    return TerminalChild([size] {
        char path[4096] = "unchanged";
        const bool given = askProgramPath("zor.exe", path, size);
        const std::string line = std::string("\nanswer: ") + path + "\n";
        (void)!write(STDOUT_FILENO, line.data(), line.size());
        return given ? 1 : 0;
    });
}

class ProgramPathPrompt : public testing::Test {
protected:
    ProgramPathPrompt()
    {
        program_ = folder_.write("zor", "#!/bin/sh\n");
        chmod(program_.c_str(), 0755);
        plainFile_ = folder_.write("notes.txt", "text");
    }

    ScratchFolder folder_{"tollan-program-path"};
    std::string program_;
    std::string plainFile_;
};

TEST_F(ProgramPathPrompt, TakesAnExecutableFileShownAsTypedAfterAWrongOne)
{
    TerminalChild child = askPathInChild();
    ASSERT_TRUE(child.waitFor(kPathLine)) << child.screen();
    EXPECT_NE(child.settings().c_lflag & (ICANON | ECHO), 0u);
    child.type(plainFile_ + "\r");
    ASSERT_TRUE(child.waitFor(kPathLine, 2)) << child.screen();
    child.type(program_ + "\r");
    EXPECT_TRUE(child.waitFor("answer: " + program_ + "\r\n")) << child.screen();
    EXPECT_NE(child.screen().find(std::string(kPathLine) + program_ + "\r\n"), std::string::npos) << "echoed";
    EXPECT_EQ(child.exitCode(), 1);
}

TEST_F(ProgramPathPrompt, AnEmptyLineOrTheEndGivesNone)
{
    for (const char *typed : {"\r", "\x04"}) {
        TerminalChild child = askPathInChild();
        ASSERT_TRUE(child.waitFor(kPathLine)) << child.screen();
        child.type(typed);
        EXPECT_TRUE(child.waitFor("answer: unchanged\r\n")) << child.screen();
        EXPECT_EQ(child.exitCode(), 0);
    }
}

TEST_F(ProgramPathPrompt, AsksAgainForWhatIsNoProgramThreeTimesAtMost)
{
    // A folder, a missing file, a plain file: no fourth question.
    TerminalChild child = askPathInChild();
    const std::string wrong[] = {folder_.path(""), folder_.path("missing"), plainFile_};
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(child.waitFor(kPathLine, i + 1)) << child.screen();
        child.type(wrong[i] + "\r");
    }
    EXPECT_TRUE(child.waitFor("answer: unchanged\r\n")) << child.screen();
    EXPECT_NE(child.screen().find(plainFile_ + " is not an executable file.\r\n"), std::string::npos);
    EXPECT_EQ(child.exitCode(), 0);
}

TEST_F(ProgramPathPrompt, APathLongerThanTheCallersRoomIsRefused)
{
    TerminalChild child = askPathInChild(program_.size());  // no room for the terminating zero
    ASSERT_TRUE(child.waitFor(kPathLine));
    child.type(program_ + "\r");
    ASSERT_TRUE(child.waitFor("The path is too long.\r\n")) << child.screen();
    child.type("\r");
    EXPECT_EQ(child.exitCode(), 0);
}

TEST(FatalMessage, GoesToTheTerminal)
{
    TerminalChild child([] {
        showFatalMessage("Fatal Run-time Error", "Unrecoverable Internal Error.\nProgram will be aborted.");
        return 0;
    });
    EXPECT_TRUE(child.waitFor(
        "\r\nFatal Run-time Error\r\nUnrecoverable Internal Error.\r\nProgram will be aborted.\r\n"))
        << child.screen();
    EXPECT_EQ(child.exitCode(), 0);
}

}  // namespace
