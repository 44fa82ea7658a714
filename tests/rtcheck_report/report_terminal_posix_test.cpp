// The run-time error report asked on a terminal, end to end: the report
// probe runs on a pseudo-terminal of the test's own, the test reads the
// question from the screen and types the answer, as the developer would.
// "Break" with the monitor stored as the development environment brings the
// monitor up for the running probe, and the probe stops in it.
#include <gtest/gtest.h>

#include <unistd.h>

#include <string>

#include "debugger/environment_start.h"
#include "fixtures/probes.h"
#include "fixtures/terminal_child.h"
#include "services/configuration.h"

namespace {

using tollan::testing::TerminalChild;

constexpr int kWentOn = 7;
constexpr int kEndedWithMinusOne = 255;

// The probe reports "Dynamic memory is corrupt." at severity and waits on
// the terminal for the answer.
std::function<int()> reportAt(const char *severity)
{
    return [severity] {
        const std::string probe = probePath("report_probe");
        execl(probe.c_str(), probe.c_str(), "unattended", "-", severity, static_cast<char *>(nullptr));
        return 126;
    };
}

class StoredEnvironment {
public:
    explicit StoredEnvironment(const char *path)
    {
        tollan::services::storeConfigurationText(tollan::debugger::kEnvironmentPathSetting, path);
    }
    ~StoredEnvironment()
    {
        tollan::services::storeConfigurationText(tollan::debugger::kEnvironmentPathSetting, "");
    }
    StoredEnvironment(const StoredEnvironment &) = delete;
    StoredEnvironment &operator=(const StoredEnvironment &) = delete;
};

TEST(ReportOnTerminal, TheKeyDecidesAndEnterTakesTheDefaultOfTheSeverity)
{
    const struct {
        const char *severity;
        const char *keys;
        int exitCode;
        const char *title;
    } rows[] = {
        {"3", "t", kEndedWithMinusOne, "Fatal Run-time Error"},
        {"3", "i", kWentOn, "Fatal Run-time Error"},
        {"3", "\r", kEndedWithMinusOne, "Fatal Run-time Error"},
        {"2", "\r", kWentOn, "Non-Fatal Run-time Error"},
        {"2", "xT", kEndedWithMinusOne, "Non-Fatal Run-time Error"},  // an unknown key asks again
    };
    for (const auto &row : rows) {
        TerminalChild child(reportAt(row.severity));
        ASSERT_TRUE(child.started());
        ASSERT_TRUE(child.waitFor("? ")) << child.screen();
        for (const char key : std::string(row.keys)) {
            child.type(std::string(1, key));
            if (key == 'x') {
                ASSERT_TRUE(child.waitFor("? ", 2)) << child.screen();
            }
        }
        EXPECT_EQ(child.exitCode(), row.exitCode) << row.keys;
        const std::string &screen = child.screen();
        EXPECT_NE(screen.find(row.title), std::string::npos) << screen;
        EXPECT_NE(screen.find("File \"probe.c\", line 3, column 7:"), std::string::npos) << screen;
        EXPECT_NE(screen.find("Dynamic memory is corrupt."), std::string::npos) << screen;
    }
}

TEST(ReportOnTerminal, BreakWithoutAnEnvironmentOffersToRetryAndCancelGoesOn)
{
    StoredEnvironment none("");
    TerminalChild child(reportAt("2"));
    ASSERT_TRUE(child.started());
    ASSERT_TRUE(child.waitFor("? ")) << child.screen();
    child.type("b");
    ASSERT_TRUE(child.waitFor("Unable to launch ZOR environment.")) << child.screen();
    ASSERT_TRUE(child.waitFor("? ", 2)) << child.screen();
    child.type("c");
    EXPECT_EQ(child.exitCode(), kWentOn);
    child.waitFor("the program goes on.");
    EXPECT_NE(child.screen().find("Break: no debugger watches this process and none was started"),
              std::string::npos)
        << child.screen();
}

#ifdef TOLLAN_MONITOR_PATH
TEST(ReportOnTerminal, BreakBringsUpTheStoredMonitorAndStopsInIt)
{
    StoredEnvironment monitor(TOLLAN_MONITOR_PATH);
    TerminalChild child(reportAt("2"));
    ASSERT_TRUE(child.started());
    ASSERT_TRUE(child.waitFor("? ")) << child.screen();
    child.type("b");
    // The monitor shares the probe's terminal: its report shows there.
    EXPECT_TRUE(child.waitFor("tollan-monitor: attached to process " + std::to_string(child.pid())))
        << child.screen();
    EXPECT_TRUE(child.waitFor("stopped at probe.c:3.7")) << child.screen();
    EXPECT_TRUE(child.waitFor("resumed")) << child.screen();
    EXPECT_TRUE(child.waitFor("tollan-monitor: module detached")) << child.screen();
    EXPECT_EQ(child.exitCode(), kWentOn);
}
#endif

}  // namespace
