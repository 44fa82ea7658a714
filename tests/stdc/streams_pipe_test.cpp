// The streams against pipes: when line-buffered and unbuffered streams
// reach a reader, and fflush(stdin) dropping what was typed ahead. Each
// system lends its own pipe (a FIFO, a named pipe); the streams' side of the
// tests is the same on both.
#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <string>

#include <tollan/ansi_c.h>

#include "fixtures/scratch_folder.h"
#include "stdc/stream.h"

namespace {

using tollan::testing::ScratchFolder;

#ifdef _WIN32
// A named pipe whose server end the test reads without waiting.
class PipeReader {
public:
    explicit PipeReader(const ScratchFolder &)
        : path_("\\\\.\\pipe\\tollan-streams-" + std::to_string(GetCurrentProcessId())),
          server_(CreateNamedPipeA(path_.c_str(), PIPE_ACCESS_INBOUND, PIPE_TYPE_BYTE | PIPE_WAIT, 1, 4096,
                                   4096, 0, nullptr))
    {
    }
    ~PipeReader() { CloseHandle(server_); }
    const std::string &path() const { return path_; }
    // What the pipe holds now.
    std::string drain()
    {
        std::string got;
        DWORD ready = 0;
        while (PeekNamedPipe(server_, nullptr, 0, nullptr, &ready, nullptr) && ready > 0) {
            std::string block(ready, '\0');
            DWORD read = 0;
            if (!ReadFile(server_, block.data(), ready, &read, nullptr)) break;
            got.append(block, 0, read);
        }
        return got;
    }

private:
    std::string path_;
    HANDLE server_;
};

// The process's standard input replaced by the read end of a pipe.
class StandardInputPipe {
public:
    StandardInputPipe() : saved_(GetStdHandle(STD_INPUT_HANDLE))
    {
        CreatePipe(&read_, &write_, nullptr, 0);
        SetStdHandle(STD_INPUT_HANDLE, read_);
    }
    ~StandardInputPipe()
    {
        SetStdHandle(STD_INPUT_HANDLE, saved_);
        CloseHandle(read_);
        CloseHandle(write_);
    }
    bool type(const std::string &text)
    {
        DWORD put = 0;
        return WriteFile(write_, text.data(), static_cast<DWORD>(text.size()), &put, nullptr) &&
               put == text.size();
    }

private:
    HANDLE saved_;
    HANDLE read_ = nullptr;
    HANDLE write_ = nullptr;
};
#else
class PipeReader {
public:
    explicit PipeReader(const ScratchFolder &folder) : path_(folder.path("fifo"))
    {
        if (::mkfifo(path_.c_str(), 0600) == 0) fd_ = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK);
    }
    ~PipeReader() { ::close(fd_); }
    const std::string &path() const { return path_; }
    std::string drain()
    {
        std::string got;
        char block[256];
        for (ssize_t n; (n = ::read(fd_, block, sizeof block)) > 0;)
            got.append(block, static_cast<size_t>(n));
        return got;
    }

private:
    std::string path_;
    int fd_ = -1;
};

class StandardInputPipe {
public:
    StandardInputPipe() : saved_(::dup(0))
    {
        if (::pipe(ends_) == 0) ::dup2(ends_[0], 0);
    }
    ~StandardInputPipe()
    {
        ::dup2(saved_, 0);
        ::close(saved_);
        ::close(ends_[0]);
        ::close(ends_[1]);
    }
    bool type(const std::string &text)
    {
        return ::write(ends_[1], text.data(), text.size()) == static_cast<ssize_t>(text.size());
    }

private:
    int saved_;
    int ends_[2] = {-1, -1};
};
#endif

TEST(StreamPipeTest, ReadersSeeLinesAndBytesWhenTheBufferingSaysSo)
{
    ScratchFolder folder("tollan-stream-pipe");
    PipeReader reader(folder);
    TollanFILE *writer = tollan_fopen(reader.path().c_str(), "ab");
    ASSERT_NE(writer, nullptr);

    // Fully buffered (the default): nothing until the buffer fills or a flush.
    EXPECT_EQ(tollan_fputs("held", writer), 0);
    EXPECT_EQ(reader.drain(), "");
    EXPECT_EQ(tollan_fflush(writer), 0);
    EXPECT_EQ(reader.drain(), "held");

    ASSERT_EQ(tollan_setvbuf(writer, nullptr, TOLLAN_IOLBF, 128), 0);
    EXPECT_EQ(tollan_fputs("part", writer), 0);
    EXPECT_EQ(tollan_fprintf(writer, " %d", 1), 2);
    EXPECT_EQ(reader.drain(), "");
    EXPECT_EQ(tollan_fputs(" line\nnext", writer), 0);
    EXPECT_EQ(reader.drain(), "part 1 line\nnext");

    ASSERT_EQ(tollan_setvbuf(writer, nullptr, TOLLAN_IONBF, 0), 0);
    EXPECT_EQ(tollan_fputc('a', writer), 'a');
    EXPECT_EQ(reader.drain(), "a");
    EXPECT_EQ(tollan_fwrite("bcd", 1, 3, writer), 3u);
    EXPECT_EQ(reader.drain(), "bcd");
    EXPECT_EQ(tollan_fclose(writer), 0);
}

TEST(StreamPipeTest, FlushingStdinDropsTheInputTypedAhead)
{
    StandardInputPipe input;
    tollan::stdc::resetStandardStreams();
    // Binary, so that both systems hand the bytes over as they are.
    tollan::stdc::standardStream(0)->mode |= tollan::stdc::mode::kBinary;

    ASSERT_TRUE(input.type("first\nsecond\n"));
    EXPECT_EQ(tollan_getchar(), 'f');
    EXPECT_EQ(tollan_ungetc('F', tollan_stdin), 'F');
    EXPECT_EQ(tollan_fflush(tollan_stdin), 0);
    ASSERT_TRUE(input.type("third\n"));
    char line[32];
    ASSERT_NE(tollan_fgets(line, sizeof line, tollan_stdin), nullptr);
    EXPECT_STREQ(line, "third\n");
    tollan::stdc::resetStandardStreams();
}

}  // namespace
