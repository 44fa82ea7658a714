// Lines of different threads never mix.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <tollan/logger.h>

#include "fixtures/log_capture.h"
#include "platform/thread.h"

using tollan::testing::LogCapture;

namespace {

constexpr int kThreads = 4;
constexpr int kLinesEach = 200;

void writeLines(void *argument)
{
    int thread = *static_cast<int *>(argument);
    // Each thread's lines have a length and letter of their own, so that a
    // torn or mixed line cannot pass for another thread's.
    std::string filler(100 + thread * 37, static_cast<char>('a' + thread));
    for (int i = 0; i < kLinesEach; ++i) {
        WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "t.c", "Worker", i, "%d:%d:%s", thread, i, filler.c_str());
        uint32_t handle = GetZORLogTimingHandle();
        WriteZORLogTimingEvent(handle, 1, 0, 0, 0, "t.c", "Worker", i, "%d:%d:timed", thread, i);
    }
}

}  // namespace

TEST(LoggerThreads, LinesAndTimingHandlesStayWholeUnderContention)
{
    // Only what the test writes: the library's own thread lines stay out.
    LogCapture capture(ZOR_LOG_INFO | ZOR_LOG_TIMING, "[LEVEL]|[MSG]");
    int ids[kThreads];
    std::vector<std::unique_ptr<tollan::platform::Thread>> threads;
    for (int t = 0; t < kThreads; ++t) {
        ids[t] = t;
        threads.push_back(tollan::platform::Thread::start(writeLines, &ids[t]));
        ASSERT_NE(threads.back(), nullptr);
    }
    for (auto &thread : threads) thread->join();

    std::map<int, int> plainLines;
    std::map<int, int> timedLines;
    for (const std::string &line : capture.lines()) {
        int thread = -1;
        int index = -1;
        char level[16] = {};
        ASSERT_EQ(std::sscanf(line.c_str(), "%15[A-Z]|%d:%d:", level, &thread, &index), 3) << line;
        ASSERT_TRUE(thread >= 0 && thread < kThreads) << line;
        std::string prefix =
            std::string(level) + "|" + std::to_string(thread) + ":" + std::to_string(index) + ":";
        if (std::string(level) == "TIMING") {
            EXPECT_EQ(line, prefix + "timed");
            ++timedLines[thread];
        } else {
            EXPECT_EQ(line, prefix + std::string(100 + thread * 37, static_cast<char>('a' + thread)));
            ++plainLines[thread];
        }
    }
    for (int t = 0; t < kThreads; ++t) {
        EXPECT_EQ(plainLines[t], kLinesEach);
        EXPECT_EQ(timedLines[t], kLinesEach);
    }
}
