// Choosing where lines go.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include <tollan/logger.h>

#include "fixtures/log_capture.h"
#include "logger/output.h"

using tollan::logger::Output;
using tollan::testing::LogCapture;
using tollan::testing::readTextFile;
using tollan::testing::uniqueTestFileName;

namespace {

std::string writeFile(const char *stem, const char *content)
{
    std::string path = uniqueTestFileName(stem);
    std::FILE *file = std::fopen(path.c_str(), "w");
    std::fputs(content, file);
    std::fclose(file);
    return path;
}

}  // namespace

TEST(LoggerLocation, RefusedSwitchesKeepTheCurrentFile)
{
    LogCapture capture(0xFFFFFFFFu, "[MSG]");
    EXPECT_EQ(SetZORLogReportingLocation(6, 0, nullptr), 0);
    EXPECT_EQ(SetZORLogReportingLocation(ZOR_LOG_LOCATION_FILE, 0, nullptr), 0);
    EXPECT_EQ(SetZORLogReportingLocation(ZOR_LOG_LOCATION_FILE, 0, "no-such-folder/x/log.txt"), 0);
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "f", "g", 1, "still here");
    EXPECT_EQ(capture.text(), "still here\n");
}

TEST(LoggerLocation, FileFormatZeroTruncatesOtherValuesAppendAndLeavingClosesTheFile)
{
    LogCapture capture(0xFFFFFFFFu, "[MSG]");
    std::string path = writeFile("log-format", "earlier\n");
    ASSERT_EQ(SetZORLogReportingLocation(ZOR_LOG_LOCATION_FILE, 2, path.c_str()), 1);
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "f", "g", 1, "appended");
    EXPECT_EQ(readTextFile(path), "earlier\nappended\n");

    ASSERT_EQ(SetZORLogReportingLocation(ZOR_LOG_LOCATION_FILE, 0, path.c_str()), 1);
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "f", "g", 1, "alone");
    for (uint32_t silent : {0u, 2u}) {
        ASSERT_EQ(SetZORLogReportingLocation(silent, 0, nullptr), 1);
        WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "f", "g", 1, "lost");
    }
    EXPECT_EQ(readTextFile(path), "alone\n");
    // Windows refuses to remove a file that is still open.
    EXPECT_EQ(std::remove(path.c_str()), 0);
}

TEST(LoggerLocation, FailedStandardStreams)
{
    std::string goodPath = writeFile("log-good", "");
    std::string failedPath = writeFile("log-failed", "");
    std::FILE *good = std::fopen(goodPath.c_str(), "w");
    std::FILE *failed = std::fopen(failedPath.c_str(), "r");
    std::fputc('x', failed);  // a write to a read-only stream sets its error state
    {
        Output failedError(good, failed);
        EXPECT_FALSE(failedError.select(ZOR_LOG_LOCATION_STDERR, 0, nullptr));
        Output failedOutput(failed, good);
        ASSERT_TRUE(failedOutput.select(ZOR_LOG_LOCATION_STDOUT, 0, nullptr));
        failedOutput.write("never\n", 6, true);
        ASSERT_TRUE(failedOutput.select(ZOR_LOG_LOCATION_STDERR, 0, nullptr));
        failedOutput.write("to err\n", 7, true);
        std::string longEcho(5000, 'e');
        failedError.echo(longEcho.c_str(), longEcho.size());
    }
    std::fclose(good);
    std::fclose(failed);
    EXPECT_EQ(readTextFile(goodPath), "to err\n" + std::string(4095, 'e') + "\n");
    std::remove(goodPath.c_str());
    std::remove(failedPath.c_str());
}
