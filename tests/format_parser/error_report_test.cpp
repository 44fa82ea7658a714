// The report of a format string that does not parse, as the error file
// shows it.
#include <gtest/gtest.h>

#include <string>

#include <tollan/ansi_c.h>
#include <tollan/debugger.h>
#include <tollan/fmtio.h>
#include <tollan/rtcheck.h>

#include "fmtio/format_parser_report.h"
#include "rtcheck/break_settings.h"
#include "rtcheck_report/report_fixture.h"

namespace {

using tollan::fmtio::reportFormatError;
using tollan::testing::DebuggingLevel;

class FormatErrorReport : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(capture_.opened()); }
    void TearDown() override { tollan::rtcheck::startThreadBreakSettings(); }
    std::string written() { return capture_.written(); }

    tollan::testing::ErrorFileCapture capture_{"scan.c", 40, 3};
};

TEST_F(FormatErrorReport, NamesTheCharacterAndTheParserMessage)
{
    DebuggingLevel level(2);
    tollan::rtcheck::startThreadBreakSettings();
    const char format[] = "%s<%d[b9]";
    int32_t error = 0;
    const int32_t result = generate_arg_types(format, sizeof format - 1, nullptr, 0, &error);
    reportFormatError(-result, error);
    reportFormatError(0, FMT_ERR_ILLEGAL_SEPARATOR);
    EXPECT_EQ(written(),
              "scan.c[40, 3]-[40, 3]: NON-FATAL - Error at or near character 7 in the format string: Invalid "
              "size for an integer.\n"
              "scan.c[40, 3]-[40, 3]: NON-FATAL - Error at or near character 1 in the format string: Illegal "
              "separator character or illegal position of separator character.\n");
}

TEST_F(FormatErrorReport, SilentWithoutChecking)
{
    {
        DebuggingLevel level(1);
        tollan::rtcheck::startThreadBreakSettings();
        reportFormatError(3, FMT_ERR_UNKNOWN_SPECIFIER);
    }
    DebuggingLevel level(2);
    tollan::rtcheck::startThreadBreakSettings();
    SetBreakOnProtectionErrors(0);
    reportFormatError(3, FMT_ERR_UNKNOWN_SPECIFIER);
    EXPECT_EQ(written(), "");
}

}  // namespace
