// Assertion reports.
#include <gtest/gtest.h>

#include <string>

#include <tollan/logger.h>

#include "fixtures/log_capture.h"
#include "logger/log.h"

using tollan::testing::LogCapture;

TEST(LoggerAssert, ReportsAreFatalLinesWhateverTheMask)
{
    LogCapture capture(0, "[LEVEL]|[FILE]:[LINE]|[FUNC]|[MSG]");
    ZORAssert("count > 0", "queue.c", "Push", 17, "count is %d", -2);
    ZORAssert("port != NULL", "f", "g", 1, nullptr);
    // The internal report takes its message as plain text, never a format.
    tollan::logger::reportAssertion("x", "f", "g", 2, "100% sure %s");
    EXPECT_EQ(capture.text(),
              "FATAL|queue.c:17|Push|Assertion failed: count > 0 (count is -2)\n"
              "FATAL|f:1|g|Assertion failed: port != NULL\n"
              "FATAL|f:2|g|Assertion failed: x (100% sure %s)\n");
}

TEST(LoggerAssert, ReportIsCutAt1023Characters)
{
    LogCapture capture(0, "[MSG]");
    std::string message(2000, 'm');
    ZORAssert("e", "f", "g", 1, "%s", message.c_str());
    EXPECT_EQ(capture.text(), ("Assertion failed: e (" + message).substr(0, 1023) + "\n");
}
