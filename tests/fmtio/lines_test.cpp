// ReadLine and WriteLine, alone and from two threads on one handle.
#include <algorithm>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "temp_dir.h"

TEST_F(FmtioFileTest, WriteLineAddsOneLineFeed)
{
    const int32_t binary = open("b", 2, 0, 0);
    EXPECT_EQ(WriteLine(binary, "abc", -1), 3);
    EXPECT_EQ(WriteLine(binary, "xyz", 1), 1);
    EXPECT_EQ(WriteLine(binary, "", -1), 0);
    EXPECT_EQ(ZOR_CloseFile(binary), 0);
    EXPECT_EQ(readRaw("b"), "abc\nx\n\n");

    const std::string longLine(3000, 'x');
    const int32_t text = open("t", 2, 0, 1);
    EXPECT_EQ(WriteLine(text, "a\nb", -1), 3);
    EXPECT_EQ(WriteLine(text, longLine.c_str(), 1500), 1500);
    EXPECT_EQ(ZOR_CloseFile(text), 0);
    EXPECT_EQ(readRaw("t"), "a\r\nb\r\n" + longLine.substr(0, 1500) + "\r\n");

    const int32_t longBinary = open("long", 2, 0, 0);
    EXPECT_EQ(WriteLine(longBinary, longLine.c_str(), -1), 3000);
    EXPECT_EQ(ZOR_CloseFile(longBinary), 0);
    EXPECT_EQ(readRaw("long"), longLine + "\n");
}

TEST_F(FmtioFileTest, ReadLineStoresWhatFitsCountsEverythingAndStopsAfterTheLine)
{
    const std::string longLine(1500, 'L');
    writeRaw("lines",
             "ab\r\n"
             "abcdef\n"
             "\n" +
                 longLine +
                 "\n"
                 "tail");
    const int32_t handle = open("lines", 1, 2, 1);  // text mode does not change ReadLine
    char buffer[2048];

    EXPECT_EQ(ReadLine(handle, buffer, 100), 3);
    EXPECT_STREQ(buffer, "ab\r");
    EXPECT_EQ(SetFilePtr(handle, 0, 1), 4);  // right after the line, nothing read ahead
    EXPECT_EQ(ReadLine(handle, buffer, 1), 6);
    EXPECT_STREQ(buffer, "a");
    EXPECT_EQ(ReadLine(handle, buffer, -1), 0);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(ReadLine(handle, buffer, 0), 1500);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(ReadLine(handle, buffer, 100), 4);
    EXPECT_STREQ(buffer, "tail");
    EXPECT_EQ(GetFmtIOError(), 0);
    EXPECT_EQ(ReadLine(handle, buffer, 100), -2);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
}

TEST_F(FmtioFileTest, BadLineArgumentsAreRefused)
{
    writeRaw("f", "line\n");
    const int32_t handle = open("f", 0, 2, 0);
    char buffer[8];
    for (int64_t maximum : {int64_t{-2}, int64_t{INT32_MAX} + 1}) {
        EXPECT_TRUE(failedWith(ReadLine(handle, buffer, maximum), 7));
        EXPECT_TRUE(failedWith(WriteLine(handle, "x", maximum), 7));
    }
    EXPECT_TRUE(failedWith(ReadLine(handle, nullptr, 4), 7));
    EXPECT_TRUE(failedWith(WriteLine(handle, nullptr, -1), 7));
    EXPECT_EQ(ReadLine(handle, buffer, 7), 4);  // nothing was consumed or written
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
    EXPECT_EQ(readRaw("f"), "line\n");
}

TEST_F(FmtioFileTest, LinesOfTwoThreadsNeverInterleave)
{
    constexpr int kLines = 1500;
    // Lines of different lengths, so that a torn one cannot look whole.
    auto lineOf = [](int thread, int number) {
        return std::string(static_cast<size_t>(1 + number % 97), static_cast<char>('A' + thread)) + "#" +
               std::to_string(number);
    };

    const int32_t writer = open("shared", 2, 0, 1);
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([&, t] {
            for (int n = 0; n < kLines; ++n) ASSERT_GE(WriteLine(writer, lineOf(t, n).c_str(), -1), 0);
        });
    }
    for (std::thread &thread : threads) thread.join();
    ASSERT_EQ(ZOR_CloseFile(writer), 0);

    const int32_t reader = open("shared", 1, 2, 1);
    std::vector<std::string> seen[2];
    threads.clear();
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([&, t] {
            // Capped, so that a reader that never sees the end fails instead of hanging.
            char buffer[256];
            for (int read = 0; read <= 2 * kLines && ReadLine(reader, buffer, 255) >= 0; ++read)
                seen[t].push_back(buffer);
        });
    }
    for (std::thread &thread : threads) thread.join();
    ASSERT_EQ(ZOR_CloseFile(reader), 0);

    std::multiset<std::string> expected;
    for (int t = 0; t < 2; ++t) {
        for (int n = 0; n < kLines; ++n)
            expected.insert(lineOf(t, n) + "\r");  // ReadLine keeps the CR of CR LF
    }
    std::multiset<std::string> actual(seen[0].begin(), seen[0].end());
    actual.insert(seen[1].begin(), seen[1].end());
    EXPECT_EQ(actual, expected);
}
