// The streams against pipes: when line-buffered and unbuffered streams
// reach a reader, and fflush(stdin) dropping what was typed ahead.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include <tollan/ansi_c.h>

#include "fixtures/scratch_folder.h"
#include "stdc/stream.h"

namespace {

using tollan::testing::ScratchFolder;

// What a reader of the pipe can read now, without waiting.
std::string drain(int fd)
{
    std::string got;
    char block[256];
    for (ssize_t n; (n = ::read(fd, block, sizeof block)) > 0;) got.append(block, static_cast<size_t>(n));
    return got;
}

TEST(StreamPipeTest, ReadersSeeLinesAndBytesWhenTheBufferingSaysSo)
{
    ScratchFolder folder("tollan-stream-pipe");
    const std::string path = folder.path("fifo");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    TollanFILE *writer = tollan_fopen(path.c_str(), "wb");
    ASSERT_NE(writer, nullptr);

    // Fully buffered (the default): nothing until the buffer fills or a flush.
    EXPECT_EQ(tollan_fputs("held", writer), 0);
    EXPECT_EQ(drain(reader), "");
    EXPECT_EQ(tollan_fflush(writer), 0);
    EXPECT_EQ(drain(reader), "held");

    ASSERT_EQ(tollan_setvbuf(writer, nullptr, TOLLAN_IOLBF, 128), 0);
    EXPECT_EQ(tollan_fputs("part", writer), 0);
    EXPECT_EQ(tollan_fprintf(writer, " %d", 1), 2);
    EXPECT_EQ(drain(reader), "");
    EXPECT_EQ(tollan_fputs(" line\nnext", writer), 0);
    EXPECT_EQ(drain(reader), "part 1 line\nnext");

    ASSERT_EQ(tollan_setvbuf(writer, nullptr, TOLLAN_IONBF, 0), 0);
    EXPECT_EQ(tollan_fputc('a', writer), 'a');
    EXPECT_EQ(drain(reader), "a");
    EXPECT_EQ(tollan_fwrite("bcd", 1, 3, writer), 3u);
    EXPECT_EQ(drain(reader), "bcd");
    EXPECT_EQ(tollan_fclose(writer), 0);
    ::close(reader);
}

TEST(StreamPipeTest, FlushingStdinDropsTheInputTypedAhead)
{
    int pipeEnds[2];
    ASSERT_EQ(::pipe(pipeEnds), 0);
    const int savedInput = ::dup(0);
    ASSERT_EQ(::dup2(pipeEnds[0], 0), 0);
    tollan::stdc::resetStandardStreams();

    ASSERT_EQ(::write(pipeEnds[1], "first\nsecond\n", 13), 13);
    EXPECT_EQ(tollan_getchar(), 'f');
    EXPECT_EQ(tollan_ungetc('F', tollan_stdin), 'F');
    EXPECT_EQ(tollan_fflush(tollan_stdin), 0);
    ASSERT_EQ(::write(pipeEnds[1], "third\n", 6), 6);
    char line[32];
    ASSERT_NE(tollan_fgets(line, sizeof line, tollan_stdin), nullptr);
    EXPECT_STREQ(line, "third\n");

    ::dup2(savedInput, 0);
    ::close(savedInput);
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
    tollan::stdc::resetStandardStreams();
}

}  // namespace
