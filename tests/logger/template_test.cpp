// Building lines from the template.
#include <gtest/gtest.h>

#include <atomic>
#include <regex>
#include <string>
#include <thread>

#include <tollan/logger.h>

#include "fixtures/log_capture.h"
#include "logger/log.h"
#include "platform/thread.h"

using tollan::testing::LogCapture;

TEST(LoggerTemplate, DefaultTemplateShowsTimeLevelFunctionFileLineAndMessage)
{
    LogCapture capture(0xFFFFFFFFu, "[[TIME]] [[LEVEL]] [[FUNC]] [[FILE]:[LINE]] [MSG]");
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "probe.c", "Measure", 42, "reading %d of %s", 7, "ten");
    std::regex shape(R"(\[\d\d:\d\d:\d\d\.\d\d\d\] \[INFO\] \[Measure\] \[probe\.c:42\] reading 7 of ten\n)");
    EXPECT_TRUE(std::regex_match(capture.text(), shape)) << capture.text();
}

TEST(LoggerTemplate, FieldsAreExpandedAtTheirFirstOccurrenceOnlyAndNeverInsideValues)
{
    LogCapture capture(0xFFFFFFFFu, "[MSG]-[LINE]-[MSG]-[LINE]");
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "f.c", "g", 9, "hello");
    SetZORLogOutputFormat("<[THREAD]> [LEVEL] [MSG] [FUNC]@[FILE]:[LINE]");
    WriteZORLogMessage(ZOR_LOG_DLLMAIN, 0, 0, "main.c", "attach", -3, "[FILE] %s", "[LINE]");
    WriteZORLogMessage(999, 0, 0, nullptr, nullptr, 0, "odd");
    std::string thread = std::to_string(static_cast<int32_t>(tollan::platform::currentThreadId()));
    EXPECT_EQ(capture.text(), "hello-9-[MSG]-[LINE]\n<" + thread +
                                  "> DLLMAIN [FILE] [LINE] attach@main.c:-3\n<" + thread +
                                  "> UNKNOWN odd @:0\n");
}

TEST(LoggerTemplate, NoLineEndJoinsTheNextLineAndLongMessagesStayWhole)
{
    LogCapture capture(0xFFFFFFFFu, "[LEVEL] [MSG];");
    std::string longText(10000, 'x');
    WriteZORLogMessage(ZOR_LOG_INFO, 1, 0, "f", "g", 1, "progress");
    WriteZORLogMessage(ZOR_LOG_ERROR, 0, 0, "f", "g", 1, "%s|%d", longText.c_str(), 5);
    EXPECT_EQ(capture.text(), "INFO progress;ERROR " + longText + "|5;\n");
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

TEST(LoggerTemplate, AHandedOutTemplateOutlivesEveryChange)
{
    LogCapture capture(ZOR_LOG_FATAL, "[MSG]");
    const std::string templates[] = {"[MSG] one", "[LEVEL] [MSG] two", "three [MSG]"};
    std::atomic<bool> done{false};
    std::thread setter([&] {
        for (int i = 0; i < 20000; ++i) SetZORLogOutputFormat(templates[i % 3].c_str());
        done = true;
    });
    int bad = 0;
    while (!done) {
        const std::string seen = GetZORLogOutputFormat();  // read after any number of changes
        if (seen != templates[0] && seen != templates[1] && seen != templates[2] && seen != "[MSG]") ++bad;
    }
    setter.join();
    EXPECT_EQ(bad, 0);
    // Equal texts are handed out as one copy, so switching templates does not grow memory.
    SetZORLogOutputFormat(templates[0].c_str());
    const char *first = GetZORLogOutputFormat();
    SetZORLogOutputFormat(templates[1].c_str());
    SetZORLogOutputFormat(templates[0].c_str());
    EXPECT_EQ(GetZORLogOutputFormat(), first);
    EXPECT_STREQ(first, templates[0].c_str());
}
