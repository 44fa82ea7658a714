// Lines of different threads never mix, not even while the template and the
// output change under them.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
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

namespace {

// Two templates with every field, laid out differently and of different
// lengths, so that a line built from pieces of both matches neither; each
// with the pattern of its lines, which captures the line number, the message
// and the index within the message.
constexpr const char *kTemplates[2] = {
    "[TIME] <[THREAD]> [LEVEL] [FUNC] ([FILE]:[LINE]) {[MSG]} written in the first template",
    "2nd|[LINE]@[FILE]|[THREAD]|[MSG]|[LEVEL]|[FUNC]|[TIME]|",
};
constexpr const char *kPatterns[2] = {
    R"(\d\d:\d\d:\d\d\.\d{3} <-?\d+> INFO Worker \(t\.c:(\d+)\) \{(\d:(\d+):[a-z]+)\} written in the first template)",
    R"(2nd\|(\d+)@t\.c\|-?\d+\|(\d:(\d+):[a-z]+)\|INFO\|Worker\|\d\d:\d\d:\d\d\.\d{3}\|)",
};

struct Switcher {
    std::string files[2];
    std::atomic<bool> done{false};
    std::atomic<int> switches{0};
};

// Flips the template, and every so often the log file (location 5,
// appending), until the writers are done. A template costs far less to set
// than a file to open, so it changes more often.
void switchOutputs(void *argument)
{
    auto &switcher = *static_cast<Switcher *>(argument);
    for (int n = 1; !switcher.done.load(); ++n) {
        SetZORLogOutputFormat(kTemplates[n % 2]);
        if (n % 16 == 0)
            SetZORLogReportingLocation(ZOR_LOG_LOCATION_FILE, 1, switcher.files[n / 16 % 2].c_str());
        switcher.switches.fetch_add(1);
    }
}

struct Writer {
    int thread;
    Switcher *switcher;
};

// Every few lines the writer waits for the next switch, so that lines and
// switches interleave however the threads are scheduled.
void writeMessages(void *argument)
{
    const Writer &writer = *static_cast<Writer *>(argument);
    int seen = 0;
    for (int i = 0; i < kLinesEach; ++i) {
        if (i % 4 == 0) {
            while (writer.switcher->switches.load() == seen) std::this_thread::yield();
            seen = writer.switcher->switches.load();
        }
        WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "t.c", "Worker", i, "%s", lineOf(writer.thread, i).c_str());
    }
}

}  // namespace

TEST(LoggerThreads, LinesStayWholeWhileTemplateAndFileChange)
{
    Switcher switcher;
    switcher.files[0] = tollan::testing::uniqueTestFileName("log-switch");
    switcher.files[1] = tollan::testing::uniqueTestFileName("log-switch");
    {
        tollan::testing::LogCapture capture(ZOR_LOG_INFO, kTemplates[0]);
        ASSERT_EQ(SetZORLogReportingLocation(ZOR_LOG_LOCATION_FILE, 1, switcher.files[0].c_str()), 1);
        auto flipper = tollan::platform::Thread::start(switchOutputs, &switcher);
        ASSERT_NE(flipper, nullptr);
        Writer arguments[kThreads];
        std::vector<std::unique_ptr<tollan::platform::Thread>> writers;
        for (int t = 0; t < kThreads; ++t) {
            arguments[t] = {t, &switcher};
            writers.push_back(tollan::platform::Thread::start(writeMessages, &arguments[t]));
        }
        for (auto &writer : writers) {
            if (writer) writer->join();
        }
        switcher.done = true;
        flipper->join();
    }  // the capture's end closes the log file still open

    const std::regex patterns[2] = {std::regex(kPatterns[0]), std::regex(kPatterns[1])};
    std::vector<std::string> messages;
    int torn = 0;
    for (const std::string &file : switcher.files) {
        std::istringstream text(tollan::testing::readTextFile(file));
        std::remove(file.c_str());
        for (std::string line; std::getline(text, line);) {
            std::smatch found;
            if (!std::regex_match(line, found, patterns[0]) && !std::regex_match(line, found, patterns[1])) {
                if (++torn <= 5) ADD_FAILURE() << "torn line: " << line;
                continue;
            }
            EXPECT_EQ(found.str(1), found.str(3)) << "line number and message of different calls: " << line;
            messages.push_back(found.str(2));
        }
    }
    EXPECT_EQ(torn, 0) << "lines matching neither template";
    std::vector<std::string> expected;
    for (int t = 0; t < kThreads; ++t)
        for (int i = 0; i < kLinesEach; ++i) expected.push_back(lineOf(t, i));
    std::sort(messages.begin(), messages.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_TRUE(messages == expected)
        << messages.size() << " messages written, " << expected.size() << " expected";
}
