// A Fmt or Scan whose format does not parse reports it in a checked run
// (message 258 with the character's position) and returns the parser's
// message number.
#include <gtest/gtest.h>

#include <string>

#include <tollan/ansi_c.h>
#include <tollan/debugger.h>
#include <tollan/fmtio.h>
#include <tollan/rtcheck.h>

#include "fixtures/scratch_folder.h"
#include "rtcheck/break_settings.h"
#include "rtcheck_report/report_fixture.h"

namespace {

using tollan::testing::DebuggingLevel;
using tollan::testing::ScratchFolder;

TEST(ParseErrorReport, BothFamiliesReportTheCharacterOfTheirError)
{
    ScratchFolder folder{"tollan-format-engine-report"};
    TollanFILE *file = tollan_fopen(folder.path("errors.txt").c_str(), "wb");
    ASSERT_NE(file, nullptr);
    __SetUPErrorFile(file);
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    __DBG_SetCurrentThreadEnvLocation(record, nullptr, "meter.c", 12, 5);
    __DBG_SetCurrentThreadEnvFileName(record, "meter.c");
    {
        DebuggingLevel level(2);
        tollan::rtcheck::startThreadBreakSettings();
        char out[16];
        int32_t n = 0;
        EXPECT_EQ(Fmt(out, "%s<%d %d[b9]", 1, 2), -FMT_ERR_INTEGER_SIZE);
        EXPECT_EQ(Scan("1", "%s>%q", &n), -FMT_ERR_UNKNOWN_SPECIFIER);
    }
    __SetUPErrorFile(nullptr);
    tollan_fclose(file);
    __DBG_SetCurrentThreadEnvLocation(record, nullptr, nullptr, 0, 0);
    __DBG_SetCurrentThreadEnvFileName(record, nullptr);
    tollan::rtcheck::startThreadBreakSettings();
    EXPECT_EQ(
        folder.read("errors.txt"),
        "meter.c[12, 5]-[12, 5]: NON-FATAL - Error at or near character 10 in the format string: Invalid "
        "size for an integer.\n"
        "meter.c[12, 5]-[12, 5]: NON-FATAL - Error at or near character 5 in the format string: Unknown "
        "specifier.\n");
}

}  // namespace
