// Reports that go to the error file: the line of each kind of report, the
// conditions under which nothing is written, the log lines, and sixteen
// threads writing at once. Fatal reports end the process and are tested
// with the probe (report_probe_test.cpp).
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <tollan/ansi_c.h>
#include <tollan/debugger.h>
#include <tollan/logger.h>
#include <tollan/rtcheck.h>

#include "fixtures/log_capture.h"
#include "fixtures/scratch_folder.h"
#include "rtcheck/break_settings.h"
#include "rtcheck/remote_target.h"
#include "rtcheck_report/report_fixture.h"

namespace {

using tollan::testing::DebuggingLevel;

using tollan::testing::ErrorFileCapture;
using tollan::testing::setStatement;

class ErrorFile : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(capture_.opened());
        tollan::rtcheck::startThreadBreakSettings();
    }
    void TearDown() override
    {
        tollan::rtcheck::setRemoteTargetLink(nullptr);
        tollan::rtcheck::setEvaluatingBreakpointCondition(false);
    }
    std::string written() { return capture_.written(); }

    ErrorFileCapture capture_{"main.c", 12, 5};
    DebuggingLevel level_{2};
};

TEST_F(ErrorFile, EachReportIsOneLine)
{
    const struct {
        const char *what;
        void (*report)();
        const char *line;
    } rows[] = {
        {"non-fatal check", [] { ReportUPError(2, 125, 14, 9); },
         "main.c[12, 5]-[14, 9]: NON-FATAL - Dereference of null pointer.\n"},
        {"warning", [] { ReportUPError(1, 105, 12, 30); },
         "main.c[12, 5]-[12,30]: NON-FATAL - Missing return value.\n"},
        {"placeholders", [] { ReportUPError(2, 117, 100, 200, size_t{12}, size_t{9}); },
         "main.c[12, 5]-[100,200]: NON-FATAL - Array index (12) too large (maximum: 9).\n"},
        {"string placeholder", [] { ReportUPError(2, 199, 13, 1, "count"); },
         "main.c[12, 5]-[13, 1]: NON-FATAL - Local 'count' was referenced before being initialized.\n"},
        {"severity above 3", [] { ReportUPError(4, 158, 12, 6); },
         "main.c[12, 5]-[12, 6]: NON-FATAL - Dynamic memory is corrupt.\n"},
        {"number outside the table", [] { ReportUPError(2, 99999, 12, 7); },
         "main.c[12, 5]-[12, 7]: NON-FATAL - Unknown message number\n"},
        {"negative number", [] { ReportUPError(2, -104, 12, 8); },
         "main.c[12, 5]-[12, 8]: NON-FATAL - Unknown message number\n"},
        {"argument error -1", [] { _UPLibReportError(-1, 1); },
         "main.c[12, 5]-[12, 5]: NON-FATAL - Null pointer argument to library function.\n"},
        {"argument error with sizes", [] { _UPLibReportError(-25, 2, size_t{4}, size_t{8}, size_t{2}); },
         "main.c[12, 5]-[12, 5]: NON-FATAL - Array argument too small (4 bytes).  Argument must contain at "
         "least "
         "8 bytes (2 elements).\n"},
        {"argument code past the table", [] { _UPLibReportError(INT32_MIN, 0); },
         "main.c[12, 5]-[12, 5]: NON-FATAL - Unknown message number\n"},
        {"library status", [] { _UPLibBreakpoint(nullptr, -3, nullptr); },
         "main.c[12, 5]-[12, 5]: NON-FATAL - Library function error (return value == -3 "
         "[0xfffffffffffffffd]).\n"},
        {"the debugger link's inconsistent stack", [] { __DBG_ReportStackCorruption(); },
         "main.c[12, 5]-[12, 5]: NON-FATAL - ZOR has detected an inconsistency of the run-time stack.\nThis "
         "might have been caused by a calling convention\nmismatch in the last function call.\n"},
        {"library status with a text",
         [] { _UPLibBreakpointWithElab("status", 0x10, "Port not open", nullptr); },
         "main.c[12, 5]-[12, 5]: NON-FATAL - Library function error (status == 16 [0x10]).\nPort not open\n"},
    };
    for (const auto &row : rows) {
        const size_t before = written().size();
        row.report();
        EXPECT_EQ(written().substr(before), row.line) << row.what;
    }
}

TEST_F(ErrorFile, WithoutAFileNameTheLineStartsWithTheSeverity)
{
    setStatement(nullptr, 12, 5);
    ReportUPError(2, 139, 12, 9);
    EXPECT_EQ(written(), "NON-FATAL - Comparison involving null pointer.\n");
}

TEST_F(ErrorFile, NothingIsReportedWhenTheRulesSaySo)
{
    const struct {
        const char *what;
        void (*report)();
    } rows[] = {
        {"severity 0", [] { ReportUPError(0, 125, 1, 1); }},
        {"negative severity", [] { ReportUPError(-2, 125, 1, 1); }},
        {"level 1",
         [] {
             DebuggingLevel low(1);
             ReportUPError(3, 125, 1, 1);
             _UPLibReportError(1, 1);
             _UPLibBreakpoint("status", -1, nullptr);
         }},
        {"protection errors off",
         [] {
             SetBreakOnProtectionErrors(0);
             ReportUPError(3, 125, 1, 1);
             _UPLibReportError(1, 1);
             SetBreakOnProtectionErrors(1);
         }},
        {"library errors off",
         [] {
             DisableBreakOnLibraryErrors();
             _UPLibBreakpoint("status", -1, nullptr);
             EnableBreakOnLibraryErrors();
         }},
        {"library status while a condition is evaluated",
         [] {
             tollan::rtcheck::setEvaluatingBreakpointCondition(true);
             _UPLibBreakpointWithElab("status", -1, "text", nullptr);
             tollan::rtcheck::setEvaluatingBreakpointCondition(false);
         }},
    };
    for (const auto &row : rows) {
        row.report();
        EXPECT_EQ(written(), "") << row.what;
    }
}

TEST_F(ErrorFile, AReportWhileAConditionIsEvaluatedSaysSoAndKeepsNoPosition)
{
    tollan::rtcheck::setEvaluatingBreakpointCondition(true);
    ReportUPError(2, 125, 40, 2);
    EXPECT_EQ(written(),
              "main.c[12, 5]-[12, 5]: NON-FATAL - In conditional breakpoint expression : Dereference of null "
              "pointer.\n");
}

TEST_F(ErrorFile, AnErrorPositionBelongsToItsReportOnly)
{
    ReportUPError(2, 125, 14, 9);
    _UPLibBreakpoint("status", -1, nullptr);
    const std::string text = written();
    EXPECT_NE(text.find("\nmain.c[12, 5]-[12, 5]: NON-FATAL - Library function error"), std::string::npos)
        << text;
}

TEST_F(ErrorFile, LinesReachTheLogAtTheLevelOfTheirSeverity)
{
    const struct {
        uint32_t mask;
        int32_t severity;
        const char *logged;  // the level the line is logged at; null for none
    } rows[] = {
        {ZOR_LOG_ERROR, 2, "ERROR"},   {ZOR_LOG_WARNING, 1, "WARNING"}, {ZOR_LOG_ERROR, 1, nullptr},
        {ZOR_LOG_WARNING, 2, nullptr}, {ZOR_LOG_INFO, 4, "INFO"},
    };
    for (const auto &row : rows) {
        tollan::testing::LogCapture log(row.mask);
        ReportUPError(row.severity, 125, 14, 9);
        const std::vector<std::string> lines = log.lines();
        if (row.logged == nullptr) {
            EXPECT_TRUE(lines.empty()) << row.mask << " " << row.severity;
            continue;
        }
        ASSERT_EQ(lines.size(), 1u) << row.mask << " " << row.severity;
        EXPECT_EQ(lines[0],
                  std::string(row.logged) +
                      "|c/up_run|ReportErrorMessage|main.c[12, 5]-[14, 9]: NON-FATAL - Dereference of "
                      "null pointer.");
    }
}

TEST_F(ErrorFile, SixteenThreadsWriteWholeLines)
{
    constexpr int kThreads = 16;
    constexpr int kReports = 200;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            const std::string file = "thread" + std::to_string(t) + ".c";
            setStatement(file.c_str(), t + 1, 1);
            for (int i = 0; i < kReports; ++i) ReportUPError(2, 117, t + 1, 2, size_t(i), size_t{7});
            setStatement(nullptr, 0, 0);
        });
    }
    for (std::thread &thread : threads) thread.join();
    const std::regex line(
        R"(thread(\d+)\.c\[ *(\d+), 1\]-\[ *(\d+), 2\]: NON-FATAL - Array index \((\d+)\) too large \(maximum: 7\)\.)");
    std::map<int, int> next;  // each thread's reports come in its own order
    std::istringstream text(written());
    int lines = 0;
    for (std::string each; std::getline(text, each); ++lines) {
        std::smatch parts;
        ASSERT_TRUE(std::regex_match(each, parts, line)) << each;
        const int thread = std::stoi(parts[1]);
        EXPECT_EQ(std::stoi(parts[2]), thread + 1);
        EXPECT_EQ(std::stoi(parts[3]), thread + 1);
        EXPECT_EQ(std::stoi(parts[4]), next[thread]++) << each;
    }
    EXPECT_EQ(lines, kThreads * kReports);
}

}  // namespace
