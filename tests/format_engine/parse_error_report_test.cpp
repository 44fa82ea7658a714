// A Fmt or Scan whose format does not parse reports it in a checked run
// (message 258 with the character's position) and returns the parser's
// message number.
#include <gtest/gtest.h>

#include <string>

#include <tollan/ansi_c.h>
#include <tollan/debugger.h>
#include <tollan/fmtio.h>
#include <tollan/rtcheck.h>

#include "rtcheck/break_settings.h"
#include "rtcheck_report/report_fixture.h"

namespace {

using tollan::testing::DebuggingLevel;

TEST(ParseErrorReport, BothFamiliesReportTheCharacterOfTheirError)
{
    tollan::testing::ErrorFileCapture capture("meter.c", 12, 5);
    ASSERT_TRUE(capture.opened());
    {
        DebuggingLevel level(2);
        tollan::rtcheck::startThreadBreakSettings();
        char out[16];
        int32_t n = 0;
        EXPECT_EQ(Fmt(out, "%s<%d %d[b9]", 1, 2), -FMT_ERR_INTEGER_SIZE);
        EXPECT_EQ(Scan("1", "%s>%q", &n), -FMT_ERR_UNKNOWN_SPECIFIER);
    }
    tollan::rtcheck::startThreadBreakSettings();
    EXPECT_EQ(
        capture.written(),
        "meter.c[12, 5]-[12, 5]: NON-FATAL - Error at or near character 10 in the format string: Invalid "
        "size for an integer.\n"
        "meter.c[12, 5]-[12, 5]: NON-FATAL - Error at or near character 5 in the format string: Unknown "
        "specifier.\n");
}

}  // namespace
