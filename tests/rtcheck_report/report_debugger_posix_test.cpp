// Reports while a debugger watches: the probe runs under tollan-monitor,
// which shows the texts it is sent and resumes every break at once.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <string>

#include "fixtures/log_capture.h"
#include "fixtures/probes.h"
#include "fixtures/scratch_folder.h"

namespace {

#define EXPECT_HAS(text, part) EXPECT_NE((text).find(part), std::string::npos) << (text)

TEST(ReportUnderADebugger, TheDebuggerGetsTheReportAndTheThreadBreaksAndGoesOn)
{
    tollan::testing::ScratchFolder folder("tollan-rtcheck-debugger");
    const std::string log = folder.path("monitor.txt");
    const std::string command = std::string(TOLLAN_MONITOR_PATH) + " run --log " + log + " -- " +
                                probePath("report_probe") + " debugger - > /dev/null";
    const int status = std::system(command.c_str());
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 7);  // the fatal report did not end the program: the debugger decides
    const std::string text = tollan::testing::readTextFile(log);
    // Lines, columns, severity, the text's address and its size with the null.
    EXPECT_HAS(text, "event: @{run_time_error|3|7|4|8|3|");
    EXPECT_HAS(text, std::string("|") + std::to_string(sizeof "Dynamic memory is corrupt.") + ":16}@");
    EXPECT_HAS(text, "event: @{lookup_address|");
    EXPECT_HAS(text, "|512:16}@");
    // Nobody named the function: the status is reported without a name.
    const size_t size = sizeof "Library function error (status == -3 [0xfffffffffffffffd]).\nPort not open";
    EXPECT_HAS(text, "event: @{run_time_error|3|7|3|7|2|");
    EXPECT_HAS(text, "|" + std::to_string(size) + ":16}@");
    EXPECT_HAS(text, "stopped at probe.c:3.7");
}

}  // namespace
