// Assertion reports.
#include <gtest/gtest.h>

#include <string>

#include <tollan/logger.h>

#include "fixtures/log_capture.h"
#include "logger/log.h"

using tollan::testing::LogCapture;

TEST(LoggerAssert, ReportWithFormattedMessageIsAFatalLineWhateverTheMask)
{
    LogCapture capture(0, "[LEVEL]|[FILE]:[LINE]|[FUNC]|[MSG]");
    ZORAssert("count > 0", "queue.c", "Push", 17, "count is %d", -2);
    EXPECT_EQ(capture.text(), "FATAL|queue.c:17|Push|Assertion failed: count > 0 (count is -2)\n");
}

TEST(LoggerAssert, NullMessageGivesTheExpressionOnly)
{
    LogCapture capture(0, "[MSG]");
    ZORAssert("port != NULL", "f", "g", 1, nullptr);
    TOLLAN_ASSERT_FAILED("(keyEnum > 0)", "Mgsource/Registry", "WinKeyHandle");
    EXPECT_EQ(capture.text(), "Assertion failed: port != NULL\nAssertion failed: (keyEnum > 0)\n");
}

TEST(LoggerAssert, InternalReportTakesTheMessageAsPlainText)
{
    LogCapture capture(0, "[MSG]");
    tollan::logger::reportAssertion("x", "f", "g", 1, "100% sure %s");
    EXPECT_EQ(capture.text(), "Assertion failed: x (100% sure %s)\n");
}

TEST(LoggerAssert, ReportIsCutAt1023Characters)
{
    LogCapture capture(0, "[MSG]");
    std::string message(2000, 'm');
    ZORAssert("e", "f", "g", 1, "%s", message.c_str());
    std::string expected = "Assertion failed: e (" + message;
    EXPECT_EQ(capture.text(), expected.substr(0, 1023) + "\n");
}
