// Reports that end the process or write to standard error, made by the report
// probe in a process of its own.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "fixtures/log_capture.h"
#include "fixtures/probes.h"
#include "fixtures/scratch_folder.h"

namespace {

using tollan::testing::ScratchFolder;

constexpr int kWentOn = 7;

// The probe's exit status as the program gave it, -1 included. On POSIX it
// runs without a controlling terminal, so that nobody can be asked.
int runProbe(const std::string &arguments)
{
#ifdef _WIN32
    return probeExitStatus("report_probe", arguments);
#else
    return probeExitStatus("report_probe", arguments, "setsid -w ");
#endif
}

TEST(ReportProbe, AFatalReportToTheErrorFileEndsTheProcessWithMinusOne)
{
    ScratchFolder folder("tollan-rtcheck-probe");
    const struct {
        const char *mode;
        const char *line;
    } rows[] = {
        {"file-check", "probe.c[ 3, 7]-[ 4, 8]: FATAL - Dereference of null pointer.\n"},
        {"file-argument", "probe.c[ 3, 7]-[ 3, 7]: FATAL - Null pointer argument to library function.\n"},
    };
    for (const auto &row : rows) {
        const std::string file = folder.path(row.mode);
        EXPECT_EQ(runProbe(std::string(row.mode) + " " + file), -1) << row.mode;
        EXPECT_EQ(tollan::testing::readTextFile(file), row.line) << row.mode;
    }
}

#ifdef _WIN32
// Wine without a display (DISPLAY set and empty) cannot make the dialog: the
// stop box cannot show either, and the program ends with -1. Elsewhere the
// dialog would wait for a click.
TEST(ReportProbe, ADialogThatCannotBeMadeEndsTheProgram)
{
    const char *display = std::getenv("DISPLAY");
    if (display == nullptr || display[0] != '\0') GTEST_SKIP() << "needs Wine without a display";
    EXPECT_EQ(runProbe("unattended ignore 2"), -1);
}
#else
// Without a terminal there is nobody to ask (Windows always has the dialog).
TEST(ReportProbe, WithNobodyToAskTheReportGoesToStandardErrorAndTheSettingDecides)
{
    ScratchFolder folder("tollan-rtcheck-unattended");
    const std::string errors = folder.path("stderr.txt");
    const struct {
        const char *action;
        int severity;
        int status;
        const char *title;
        const char *after;
    } rows[] = {
        {"-", 3, -1, "Fatal Run-time Error", ""},
        {"-", 2, kWentOn, "Non-Fatal Run-time Error", ""},
        {"-", 1, kWentOn, "Non-Fatal Run-time Error", ""},  // warnings are shown as non-fatal errors
        {"ignore", 3, kWentOn, "Fatal Run-time Error", ""},
        {"terminate", 2, -1, "Non-Fatal Run-time Error", ""},
        // No debugger watches, no development environment is stored and
        // nobody can be asked for one: the program goes on, and says why.
        {"break", 3, kWentOn, "Fatal Run-time Error",
         "Break: no debugger watches this process and none was started; the program goes on.\n"},
    };
    for (const auto &row : rows) {
        const std::string what = std::string(row.action) + " " + std::to_string(row.severity);
        EXPECT_EQ(runProbe("unattended " + what + " 2> " + errors), row.status) << what;
        EXPECT_EQ(tollan::testing::readTextFile(errors), std::string(row.title) +
                                                             "\nFile \"probe.c\", line 3, column 7:\n\n"
                                                             "Dynamic memory is corrupt.\n" +
                                                             row.after)
            << what;
    }
}

#endif

}  // namespace
