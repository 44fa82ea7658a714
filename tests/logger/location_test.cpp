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

void writeFile(const std::string &path, const char *content)
{
    std::FILE *file = std::fopen(path.c_str(), "w");
    ASSERT_NE(file, nullptr);
    std::fputs(content, file);
    std::fclose(file);
}

// A stream in the failed state, as a standard stream is after a write error.
std::FILE *failedStream(const std::string &path)
{
    writeFile(path, "");
    std::FILE *stream = std::fopen(path.c_str(), "r");
    std::fputc('x', stream);
    return stream;
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

TEST(LoggerLocation, FileFormatZeroTruncatesOtherValuesAppend)
{
    LogCapture capture(0xFFFFFFFFu, "[MSG]");
    std::string path = uniqueTestFileName("log-format");
    writeFile(path, "earlier\n");
    ASSERT_EQ(SetZORLogReportingLocation(ZOR_LOG_LOCATION_FILE, 2, path.c_str()), 1);
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "f", "g", 1, "appended");
    EXPECT_EQ(readTextFile(path), "earlier\nappended\n");

    ASSERT_EQ(SetZORLogReportingLocation(ZOR_LOG_LOCATION_FILE, 0, path.c_str()), 1);
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "f", "g", 1, "alone");
    EXPECT_EQ(readTextFile(path), "alone\n");
    SetZORLogReportingLocation(ZOR_LOG_LOCATION_NONE, 0, nullptr);
    std::remove(path.c_str());
}

TEST(LoggerLocation, LeavingTheFileClosesItAndSilentLocationsWriteNothing)
{
    LogCapture capture(0xFFFFFFFFu, "[MSG]");
    std::string path = uniqueTestFileName("log-leave");
    ASSERT_EQ(SetZORLogReportingLocation(ZOR_LOG_LOCATION_FILE, 0, path.c_str()), 1);
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "f", "g", 1, "one");
    for (uint32_t silent : {0u, 2u}) {
        ASSERT_EQ(SetZORLogReportingLocation(silent, 0, nullptr), 1);
        WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "f", "g", 1, "lost");
    }
    EXPECT_EQ(readTextFile(path), "one\n");
    // Windows refuses to remove a file that is still open.
    EXPECT_EQ(std::remove(path.c_str()), 0);
    EXPECT_EQ(capture.text(), "");
}

TEST(LoggerLocation, StandardErrorIsRefusedWhileFailedAndStandardOutputSkippedWhileFailed)
{
    std::string goodPath = uniqueTestFileName("log-good");
    std::string failedPath = uniqueTestFileName("log-failed");
    writeFile(goodPath, "");
    std::FILE *good = std::fopen(goodPath.c_str(), "w");
    std::FILE *failed = failedStream(failedPath);
    {
        Output withFailedError(good, failed);
        EXPECT_FALSE(withFailedError.select(ZOR_LOG_LOCATION_STDERR, 0, nullptr));
        EXPECT_TRUE(withFailedError.select(ZOR_LOG_LOCATION_STDOUT, 0, nullptr));
        withFailedError.write("to out\n", 7, true);

        Output withFailedOutput(failed, good);
        EXPECT_TRUE(withFailedOutput.select(ZOR_LOG_LOCATION_STDOUT, 0, nullptr));
        withFailedOutput.write("never\n", 6, true);
        EXPECT_TRUE(withFailedOutput.select(ZOR_LOG_LOCATION_STDERR, 0, nullptr));
        withFailedOutput.write("to err\n", 7, true);
    }
    std::fclose(good);
    std::fclose(failed);
    EXPECT_EQ(readTextFile(goodPath), "to out\nto err\n");
    std::remove(goodPath.c_str());
    std::remove(failedPath.c_str());
}

TEST(LoggerLocation, EchoIsCutAt4095Characters)
{
    std::string path = uniqueTestFileName("log-echo");
    std::FILE *out = std::fopen(path.c_str(), "w");
    ASSERT_NE(out, nullptr);
    {
        Output output(out, out);
        std::string text(5000, 'e');
        output.echo(text.c_str(), text.size());
    }
    std::fclose(out);
    EXPECT_EQ(readTextFile(path), std::string(4095, 'e') + "\n");
    std::remove(path.c_str());
}
