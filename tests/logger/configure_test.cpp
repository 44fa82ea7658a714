// Configuring the logger from its settings.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include <tollan/logger.h>

#include "fixtures/log_capture.h"
#include "fixtures/settings_writer.h"
#include "logger/configure.h"
#include "logger/line_template.h"
#include "logger/log.h"

using tollan::logger::configureFromSettings;
using tollan::testing::currentLogLocation;
using tollan::testing::LogCapture;
using tollan::testing::readTextFile;
using tollan::testing::storeDword;
using tollan::testing::storeString;

namespace {

constexpr const char *kLoggerKey = "Software\\Vantrel\\ZOR\\17.0\\Logger";

void storeDefaults()
{
    storeDword(kLoggerKey, "Log Level", ZOR_LOG_FATAL);
    storeDword(kLoggerKey, "Log Output Location", ZOR_LOG_LOCATION_STDERR);
    storeString(kLoggerKey, "Log Format", tollan::logger::LineTemplate::kDefault);
}

// Each test starts from stored settings that behave as the defaults do and
// leaves them so (they outlive the test program), and leaves the logger as
// it found it.
class LoggerConfigure : public ::testing::Test {
protected:
    void SetUp() override { storeDefaults(); }
    void TearDown() override
    {
        storeDefaults();
        SetZORLogReportingLocation(ZOR_LOG_LOCATION_STDERR, 0, nullptr);
        SetZORLogReportingLevels(mask_);
        SetZORLogOutputFormat(template_.c_str());
        std::remove(logFile_.c_str());
    }

    void storeFileLocation()
    {
        ASSERT_EQ(storeDword(kLoggerKey, "Log Output Location", ZOR_LOG_LOCATION_FILE), 0);
        ASSERT_EQ(storeString(kLoggerKey, "Log File Name", logFile_.c_str()), 0);
        ASSERT_EQ(storeDword(kLoggerKey, "Log File Format", 0), 0);
    }

    uint32_t mask_ = GetZORLogReportingLevels();
    std::string template_ = GetZORLogOutputFormat();
    std::string logFile_ = tollan::testing::uniqueTestFileName("configured-log");
};

}  // namespace

TEST_F(LoggerConfigure, LevelStoredAsTextFallsBackToFatalOnly)
{
    ASSERT_EQ(storeDword(kLoggerKey, "Log Level", 0x60), 0);
    configureFromSettings();
    EXPECT_EQ(GetZORLogReportingLevels(), 0x60u);
    ASSERT_EQ(storeString(kLoggerKey, "Log Level", "96"), 0);
    configureFromSettings();
    EXPECT_EQ(GetZORLogReportingLevels(), 64u);
}

TEST_F(LoggerConfigure, FileLocationWithNameAndFormatReceivesTheLines)
{
    storeFileLocation();
    ASSERT_EQ(storeString(kLoggerKey, "Log Format", "[LEVEL] [MSG]"), 0);
    configureFromSettings();
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "f", "g", 1, "configured");
    EXPECT_EQ(readTextFile(logFile_), "INFO configured\n");

    // Without a readable name the location is left as it is.
    ASSERT_EQ(storeDword(kLoggerKey, "Log File Name", 1), 0);
    SetZORLogReportingLocation(ZOR_LOG_LOCATION_NONE_2, 0, nullptr);
    configureFromSettings();
    EXPECT_EQ(currentLogLocation(), static_cast<uint32_t>(ZOR_LOG_LOCATION_NONE_2));
}

TEST_F(LoggerConfigure, OnlyTheTemplateReadCountsAsConfiguring)
{
    ASSERT_EQ(storeDword(kLoggerKey, "Log Level", ZOR_LOG_WARNING | ZOR_LOG_FATAL), 0);
    ASSERT_EQ(storeString(kLoggerKey, "Log Output Location", "5"), 0);
    ASSERT_EQ(storeDword(kLoggerKey, "Log Format", 7), 0);
    LogCapture capture;
    configureFromSettings();
    EXPECT_FALSE(tollan::logger::configuring());
    // The unreadable location's failure went to the output in force before
    // the switch to standard error; the template's failure went nowhere, and
    // the template stayed.
    EXPECT_EQ(capture.count("WARNING|Mgsource/Registry|RegGetDwordValue|"), 1u);
    EXPECT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(currentLogLocation(), static_cast<uint32_t>(ZOR_LOG_LOCATION_STDERR));
    EXPECT_STREQ(GetZORLogOutputFormat(), LogCapture::kTemplate);
}

TEST_F(LoggerConfigure, LaterCallsOfConfigureOnceDoNothing)
{
    ConfigureZORLoggerOnce();
    SetZORLogReportingLevels(0x7);
    ASSERT_EQ(storeDword(kLoggerKey, "Log Level", 0x40), 0);
    ConfigureZORLoggerOnce();
    EXPECT_EQ(GetZORLogReportingLevels(), 0x7u);
}
