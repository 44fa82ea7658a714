// Lines of different threads never mix.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <tollan/logger.h>

#include "fixtures/log_capture.h"
#include "platform/thread.h"

namespace {

constexpr int kThreads = 4;
constexpr int kLinesEach = 200;

// Each thread's lines have a length and letter of their own, so that a torn
// or mixed line cannot pass for another thread's.
std::string lineOf(int thread, int index)
{
    return std::to_string(thread) + ":" + std::to_string(index) + ":" +
           std::string(100 + thread * 37, static_cast<char>('a' + thread));
}

void writeLines(void *argument)
{
    int thread = *static_cast<int *>(argument);
    for (int i = 0; i < kLinesEach; ++i) {
        WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "t.c", "Worker", i, "%s", lineOf(thread, i).c_str());
        uint32_t handle = GetZORLogTimingHandle();
        WriteZORLogTimingEvent(handle, 1, 0, 0, 0, "t.c", "Worker", i, "%d:%d", thread, i);
    }
}

}  // namespace

TEST(LoggerThreads, LinesAndTimingHandlesStayWholeUnderContention)
{
    // Only what the test writes: the library's own thread lines stay out.
    tollan::testing::LogCapture capture(ZOR_LOG_INFO | ZOR_LOG_TIMING, "[LEVEL]|[MSG]");
    int ids[kThreads];
    std::vector<std::unique_ptr<tollan::platform::Thread>> threads;
    std::vector<std::string> expected;
    for (int t = 0; t < kThreads; ++t) {
        ids[t] = t;
        threads.push_back(tollan::platform::Thread::start(writeLines, &ids[t]));
        ASSERT_NE(threads.back(), nullptr);
        for (int i = 0; i < kLinesEach; ++i) {
            expected.push_back("INFO|" + lineOf(t, i));
            expected.push_back("TIMING|" + std::to_string(t) + ":" + std::to_string(i));
        }
    }
    for (auto &thread : threads) thread->join();

    std::vector<std::string> written = capture.lines();
    std::sort(written.begin(), written.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_TRUE(written == expected) << written.size() << " lines written, " << expected.size()
                                     << " expected";
}
