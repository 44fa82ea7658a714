// Building lines from the template.
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include <tollan/logger.h>

#include "fixtures/log_capture.h"
#include "logger/levels.h"
#include "logger/log.h"
#include "platform/thread.h"

using tollan::testing::LogCapture;

TEST(LoggerTemplate, DefaultTemplateShowsTimeLevelFunctionFileLineAndMessage)
{
    LogCapture capture(0xFFFFFFFFu, "[[TIME]] [[LEVEL]] [[FUNC]] [[FILE]:[LINE]] [MSG]");
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "probe.c", "Measure", 42, "reading %d of %s", 7, "ten");
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_TRUE(std::regex_match(
        capture.lines()[0], std::regex(R"(\[\d\d:\d\d:\d\d\.\d\d\d\] \[INFO\] \[Measure\] \[probe\.c:42\] )"
                                       R"(reading 7 of ten)")))
        << capture.lines()[0];
}

TEST(LoggerTemplate, EachFieldIsExpandedAtItsFirstOccurrenceOnly)
{
    LogCapture capture(0xFFFFFFFFu, "[MSG]-[LINE]-[MSG]-[LINE]");
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "f.c", "g", 9, "hello");
    EXPECT_EQ(capture.text(), "hello-9-[MSG]-[LINE]\n");
}

TEST(LoggerTemplate, FieldsOutOfOrderAndTheThreadId)
{
    LogCapture capture(0xFFFFFFFFu, "<[THREAD]> [LEVEL] [MSG] [FUNC]@[FILE]:[LINE]");
    WriteZORLogMessage(ZOR_LOG_DLLMAIN, 0, 0, "main.c", "attach", -3, "up");
    std::string thread = std::to_string(static_cast<int32_t>(tollan::platform::currentThreadId()));
    EXPECT_EQ(capture.text(), "<" + thread + "> DLLMAIN up attach@main.c:-3\n");
}

TEST(LoggerTemplate, MessageTextIsNeverReadAsFields)
{
    LogCapture capture(0xFFFFFFFFu, "[MSG] [FILE]");
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "x.c", "f", 1, "[FILE] [TIME] %s", "[LINE]");
    EXPECT_EQ(capture.text(), "[FILE] [TIME] [LINE] x.c\n");
}

TEST(LoggerTemplate, NullTextsAreEmptyAndNullTemplateIsIgnored)
{
    LogCapture capture(0xFFFFFFFFu, "[FILE]|[FUNC]|[MSG]|");
    SetZORLogOutputFormat(nullptr);
    EXPECT_STREQ(GetZORLogOutputFormat(), "[FILE]|[FUNC]|[MSG]|");
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, nullptr, nullptr, 1, "m");
    EXPECT_EQ(capture.text(), "||m|\n");
}

TEST(LoggerTemplate, LevelNames)
{
    const std::pair<uint32_t, const char *> names[] = {
        {1, "TRACE"},  {2, "TIMING"},  {4, "INFO"},      {8, "TEMP"},    {16, "WARNING"}, {32, "ERROR"},
        {64, "FATAL"}, {128, "BUILD"}, {256, "DLLMAIN"}, {0, "UNKNOWN"}, {3, "UNKNOWN"},  {512, "UNKNOWN"},
    };
    for (const auto &[level, name] : names) EXPECT_STREQ(tollan::logger::levelName(level), name) << level;
}

TEST(LoggerTemplate, NoLineEndJoinsTheNextLine)
{
    LogCapture capture(0xFFFFFFFFu, "[MSG];");
    WriteZORLogMessage(ZOR_LOG_INFO, 1, 0, "f", "g", 1, "progress");
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "f", "g", 1, "done");
    EXPECT_EQ(capture.text(), "progress;done;\n");
}

TEST(LoggerTemplate, LongMessagesAreWrittenWhole)
{
    LogCapture capture(0xFFFFFFFFu, "[LEVEL] [MSG] end");
    std::string longText(10000, 'x');
    WriteZORLogMessage(ZOR_LOG_ERROR, 0, 0, "f", "g", 1, "%s|%d", longText.c_str(), 5);
    EXPECT_EQ(capture.text(), "ERROR " + longText + "|5 end\n");
}

TEST(LoggerTemplate, EchoPrintsTheMessageAloneToStandardOutput)
{
    LogCapture capture(0xFFFFFFFFu, "[LEVEL] [MSG]");
    testing::internal::CaptureStdout();
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 1, "f", "g", 1, "seen %d", 2);
    std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed, "seen 2\n");
    EXPECT_EQ(capture.text(), "INFO seen 2\n");
}

TEST(LoggerTemplate, WriterDoesNotFilterByMaskButTheMacroDoes)
{
    LogCapture capture(ZOR_LOG_FATAL, "[MSG]");
    WriteZORLogMessage(ZOR_LOG_TRACE, 0, 0, "f", "g", 1, "direct");
    bool evaluated = false;
    TOLLAN_LOG(ZOR_LOG_TRACE, "f", "g", "%d", (evaluated = true) ? 1 : 0);
    EXPECT_FALSE(evaluated);
    TOLLAN_LOG(ZOR_LOG_FATAL, "f", "g", "through the macro");
    EXPECT_EQ(capture.text(), "direct\nthrough the macro\n");
}
