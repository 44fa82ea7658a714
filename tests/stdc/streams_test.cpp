// The C streams: modes, the stream table, buffering, positions in text and
// binary files, push-back, temporary names and bad input.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include <tollan/ansi_c.h>

#include "fixtures/scratch_folder.h"
#include "stdc/library.h"
#include "stdc/stream.h"
#include "stdc/temporary_names.h"

namespace {

using tollan::testing::ScratchFolder;

class StreamTest : public testing::Test {
protected:
    ScratchFolder folder{"tollan-streams"};

    // A call that failed and left `error` in errno.
    static testing::AssertionResult failedWith(bool failed, int error)
    {
        if (failed && TOLLAN_ERRNO == error) return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << "failed " << failed << ", errno " << TOLLAN_ERRNO << " not " << error;
    }

    std::string readAll(TollanFILE *file)
    {
        std::string text;
        for (int byte; (byte = tollan_fgetc(file)) != TOLLAN_EOF;) text += static_cast<char>(byte);
        return text;
    }
};

TEST_F(StreamTest, ModesFollowTheGrammar)
{
    const std::string path = folder.write("mode.txt", "data");
    for (const char *bad : {"x", "", "+r", "br", "R"}) {
        TOLLAN_ERRNO = 0;
        EXPECT_TRUE(failedWith(tollan_fopen(path.c_str(), bad) == nullptr, EINVAL)) << bad;
    }
    for (const char *good : {"r", "rb", "r+b", "rb+", "rt", "r+", "rb+b+", "rx", "a+", "wb"}) {
        TollanFILE *file = tollan_fopen(path.c_str(), good);
        ASSERT_NE(file, nullptr) << good;
        const uint32_t mode = reinterpret_cast<tollan::stdc::Stream *>(file)->mode;
        EXPECT_EQ(mode & tollan::stdc::mode::kRead,
                  good[0] == 'r' || std::string(good).find('+') != std::string::npos ? 1u : 0u)
            << good;
        EXPECT_EQ(tollan_fclose(file), 0);
    }
    EXPECT_TRUE(failedWith(tollan_fopen(nullptr, "r") == nullptr, EINVAL));
    EXPECT_TRUE(failedWith(tollan_fopen("  ", "r") == nullptr, EINVAL));
    EXPECT_TRUE(failedWith(tollan_fopen(folder.path("missing").c_str(), "r") == nullptr, ENOENT));
}

TEST_F(StreamTest, TheTableHolds252StreamsBesideTheStandardThree)
{
    const std::string path = folder.write("many.txt", "x");
    std::vector<TollanFILE *> open;
    for (TollanFILE *file; (file = tollan_fopen(path.c_str(), "r")) != nullptr;) open.push_back(file);
    EXPECT_EQ(TOLLAN_ERRNO, EMFILE);
    EXPECT_EQ(open.size(), 252u);
    // A slot freed anywhere is taken again, its record reused.
    TollanFILE *middle = open[100];
    ASSERT_EQ(tollan_fclose(middle), 0);
    EXPECT_EQ(tollan_fopen(path.c_str(), "r"), middle);
    for (TollanFILE *file : open) EXPECT_EQ(tollan_fclose(file), 0);
}

TEST_F(StreamTest, AClosedStandardStreamLendsItsRecordToTheNextOpen)
{
    const std::string path = folder.write("reuse.txt", "reused");
    TollanFILE *input = tollan_stdin;
    ASSERT_EQ(tollan_fclose(input), 0);
    EXPECT_TRUE(failedWith(tollan_fgetc(input) == TOLLAN_EOF, EINVAL));
    TollanFILE *file = tollan_fopen(path.c_str(), "r");
    EXPECT_EQ(file, input);
    EXPECT_EQ(readAll(file), "reused");
    EXPECT_EQ(tollan_fclose(file), 0);
    tollan::stdc::resetStandardStreams();
}

TEST_F(StreamTest, FreopenKeepsTheRecordAndCleanUpClosesEveryStream)
{
    const std::string first = folder.write("first.txt", "first");
    TollanFILE *file = tollan_fopen(first.c_str(), "r");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(tollan_fgetc(file), 'f');
    const std::string second = folder.path("second.txt");
    EXPECT_EQ(tollan_freopen(second.c_str(), "w", file), file);
    EXPECT_EQ(tollan_fputs("unflushed", file), 0);
    EXPECT_TRUE(failedWith(tollan_freopen(second.c_str(), "q", file) == nullptr, EINVAL));
    EXPECT_TRUE(failedWith(tollan_fputc('x', file) == TOLLAN_EOF, EINVAL));  // closed by the failed reopen

    TollanFILE *pending = tollan_fopen(second.c_str(), "a");
    EXPECT_EQ(tollan_fputs("kept", pending), 0);
    EXPECT_EQ(folder.read("second.txt"), "unflushed");
    tollan::stdc::StdCLibCleanup();
    EXPECT_EQ(folder.read("second.txt"), "unflushedkept");
    EXPECT_TRUE(failedWith(tollan_fclose(pending) == TOLLAN_EOF, EINVAL));
    EXPECT_TRUE(tollan::stdc::StdCLibInitOnce());
}

TEST_F(StreamTest, ManyOpenCloseCyclesLeaveNothingBehind)
{
    const std::string path = folder.path("cycle.bin");
    for (int i = 0; i < 10000; ++i) {
        TollanFILE *file = tollan_fopen(path.c_str(), "ab");
        ASSERT_NE(file, nullptr) << i;
        ASSERT_EQ(tollan_fputc('a' + i % 26, file), 'a' + i % 26);
        ASSERT_EQ(tollan_fclose(file), 0);
    }
    EXPECT_EQ(folder.read("cycle.bin").size(), 10000u);
    // Every cycle gave its descriptor back: the next one is the first again.
    const int descriptor = tollan_open(path.c_str(), TOLLAN_O_READ, 0);
    EXPECT_EQ(descriptor, 3);
    EXPECT_EQ(tollan_close(descriptor), 0);
}

TEST_F(StreamTest, ThreadsSharingAStreamNeverTearALine)
{
    const std::string path = folder.path("shared.txt");
    TollanFILE *file = tollan_fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    constexpr int kThreads = 4;
    constexpr int kLines = 2000;
    std::vector<std::thread> writers;
    for (int t = 0; t < kThreads; ++t)
        writers.emplace_back([file, t] {
            for (int i = 0; i < kLines; ++i)
                tollan_fprintf(file, "thread %d line %04d with some padding\n", t, i);
        });
    for (std::thread &writer : writers) writer.join();
    EXPECT_EQ(tollan_fclose(file), 0);

    const std::string text = folder.read("shared.txt");
    std::vector<int> next(kThreads, 0);
    size_t start = 0;
    for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        int t = -1, i = -1;
        ASSERT_EQ(std::sscanf(text.substr(start, end - start).c_str(), "thread %d line %d", &t, &i), 2);
        ASSERT_TRUE(t >= 0 && t < kThreads);
        EXPECT_EQ(i, next[t]++);  // each thread's lines whole and in its order
    }
    EXPECT_EQ(next, std::vector<int>(kThreads, kLines));
}

TEST_F(StreamTest, TextModeWritesCrLfAndCountsPositionsInFileBytes)
{
    const std::string path = folder.path("text.txt");
    TollanFILE *out = tollan_fopen(path.c_str(), "w");
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(tollan_fputs("one\ntwo\n", out), 0);
    EXPECT_EQ(tollan_ftell(out), 10);  // unflushed, yet counted as the file will hold it
    EXPECT_EQ(tollan_fclose(out), 0);
    EXPECT_EQ(folder.read("text.txt"), "one\r\ntwo\r\n");

    TollanFILE *in = tollan_fopen(path.c_str(), "r");
    ASSERT_NE(in, nullptr);
    char line[16];
    ASSERT_NE(tollan_fgets(line, sizeof line, in), nullptr);
    EXPECT_STREQ(line, "one\n");
    EXPECT_EQ(tollan_ftell(in), 5);
    tollan_fpos_t mark = 0;
    EXPECT_EQ(tollan_fgetpos(in, &mark), 0);
    EXPECT_EQ(readAll(in), "two\n");
    EXPECT_EQ(tollan_feof(in), 1);
    EXPECT_EQ(tollan_fsetpos(in, &mark), 0);
    EXPECT_EQ(tollan_feof(in), 0);
    EXPECT_EQ(readAll(in), "two\n");
    EXPECT_EQ(tollan_fclose(in), 0);

    // Binary mode sees the bytes as they are.
    TollanFILE *raw = tollan_fopen(path.c_str(), "rb");
    EXPECT_EQ(readAll(raw), "one\r\ntwo\r\n");
    EXPECT_EQ(tollan_fclose(raw), 0);
}

TEST_F(StreamTest, LargeBinaryReadsGoStraightToTheCaller)
{
    const std::string bytes = tollan::testing::randomBytes(100000, 7);
    const std::string path = folder.write("big.bin", bytes);
    TollanFILE *file = tollan_fopen(path.c_str(), "rb");
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(tollan_fgetc(file), static_cast<unsigned char>(bytes[0]));
    ASSERT_EQ(tollan_ungetc('#', file), '#');
    std::string got(60000, '\0');
    // The pushed-back byte first, then the buffer's 511, then the rest direct.
    ASSERT_EQ(tollan_fread(got.data(), 1, got.size(), file), got.size());
    EXPECT_EQ(got[0], '#');
    EXPECT_EQ(got.substr(1), bytes.substr(1, 59999));
    EXPECT_EQ(tollan_ftell(file), 60000);
    std::string rest(50000, '\0');
    EXPECT_EQ(tollan_fread(rest.data(), 1000, 50, file), 40u);
    EXPECT_EQ(rest.substr(0, 40000), bytes.substr(60000));
    EXPECT_EQ(tollan_feof(file), 1);
    EXPECT_EQ(tollan_fclose(file), 0);
}

TEST_F(StreamTest, SixBytesCanBePushedBackAndTheSeventhIsRefused)
{
    const std::string path = folder.write("push.txt", "xyz");
    TollanFILE *file = tollan_fopen(path.c_str(), "rb");
    ASSERT_EQ(tollan_fgetc(file), 'x');
    for (char byte : std::string("abcdef")) EXPECT_EQ(tollan_ungetc(byte, file), byte);
    EXPECT_TRUE(failedWith(tollan_ungetc('g', file) == TOLLAN_EOF, ENOMEM));
    EXPECT_TRUE(failedWith(tollan_ungetc(TOLLAN_EOF, file) == TOLLAN_EOF, EINVAL));
    EXPECT_EQ(tollan_ftell(file), 0);  // six bytes before the one read: never below 0
    EXPECT_EQ(readAll(file), "fedcbayz");
    EXPECT_EQ(tollan_fclose(file), 0);

    TollanFILE *output = tollan_fopen(folder.path("out.txt").c_str(), "w");
    EXPECT_TRUE(failedWith(tollan_ungetc('a', output) == TOLLAN_EOF, EINVAL));
    EXPECT_EQ(tollan_fclose(output), 0);
}

TEST_F(StreamTest, RewindKeepsTheErrorFlag)
{
    const std::string path = folder.write("ro.txt", "abc");
    TollanFILE *file = tollan_fopen(path.c_str(), "r");
    EXPECT_TRUE(failedWith(tollan_fputc('z', file) == TOLLAN_EOF, EINVAL));
    EXPECT_EQ(tollan_ferror(file), 1);
    EXPECT_EQ(readAll(file), "abc");
    tollan_rewind(file);
    EXPECT_EQ(tollan_ferror(file), 1);
    EXPECT_EQ(tollan_feof(file), 0);
    EXPECT_EQ(tollan_fgetc(file), 'a');
    tollan_clearerr(file);
    EXPECT_EQ(tollan_ferror(file), 0);
    EXPECT_EQ(tollan_fclose(file), 0);
}

TEST_F(StreamTest, SeeksCheckTheirArgumentsAndWritesOverUnreadBytes)
{
    const std::string path = folder.write("seek.bin", "0123456789");
    TollanFILE *file = tollan_fopen(path.c_str(), "rb+");
    EXPECT_TRUE(failedWith(tollan_fseek(file, -1, TOLLAN_SEEK_SET) != 0, EINVAL));
    EXPECT_TRUE(failedWith(tollan_fseek(file, 0, 3) != 0, EINVAL));
    EXPECT_EQ(tollan_fseek(file, -3, TOLLAN_SEEK_END), 0);
    EXPECT_EQ(tollan_fgetc(file), '7');
    EXPECT_EQ(tollan_fseek(file, 0, TOLLAN_SEEK_CUR), 0);
    EXPECT_EQ(tollan_ftell(file), 8);
    EXPECT_EQ(tollan_fseek(file, 2, TOLLAN_SEEK_SET), 0);
    EXPECT_EQ(tollan_fgetc(file), '2');
    // Writing after reading continues where the program stands.
    EXPECT_EQ(tollan_fputc('X', file), 'X');
    EXPECT_EQ(tollan_fclose(file), 0);
    EXPECT_EQ(folder.read("seek.bin"), "012X456789");
}

TEST_F(StreamTest, SetvbufChoosesTheBufferingUntilDataIsBuffered)
{
    const std::string path = folder.path("vbuf.txt");
    TollanFILE *file = tollan_fopen(path.c_str(), "wb");
    EXPECT_TRUE(failedWith(tollan_setvbuf(file, nullptr, 7, 100) != 0, EINVAL));
    ASSERT_EQ(tollan_setvbuf(file, nullptr, TOLLAN_IOFBF, 4), 0);
    EXPECT_EQ(tollan_fputs("abc", file), 0);
    EXPECT_EQ(folder.read("vbuf.txt"), "");
    EXPECT_TRUE(failedWith(tollan_setvbuf(file, nullptr, TOLLAN_IONBF, 0) != 0, EINVAL));
    EXPECT_EQ(tollan_fputs("de", file), 0);  // fills the four bytes: out they go
    EXPECT_EQ(folder.read("vbuf.txt"), "abcd");
    ASSERT_EQ(tollan_fflush(file), 0);
    EXPECT_EQ(tollan_setvbuf(file, nullptr, TOLLAN_IOLBF, 64), 0);
    EXPECT_EQ(tollan_fputs("f\ng", file), 0);
    EXPECT_EQ(folder.read("vbuf.txt"), "abcdef\ng");
    char own[8];
    EXPECT_EQ(tollan_setvbuf(file, own, TOLLAN_IOFBF, sizeof own), 0);
    EXPECT_EQ(tollan_fwrite("hijklmnopq", 1, 10, file), 10u);
    EXPECT_EQ(tollan_fclose(file), 0);
    EXPECT_EQ(folder.read("vbuf.txt"), "abcdef\nghijklmnopq");
}

TEST_F(StreamTest, FlushingEverythingReachesEveryWriter)
{
    TollanFILE *first = tollan_fopen(folder.path("a.txt").c_str(), "wb");
    TollanFILE *second = tollan_fopen(folder.path("b.txt").c_str(), "ab");
    TollanFILE *reader = tollan_fopen(folder.write("c.txt", "c").c_str(), "rb");
    tollan_fputs("first", first);
    tollan_fputs("second", second);
    EXPECT_EQ(tollan_fgetc(reader), 'c');
    EXPECT_EQ(tollan_fflush(nullptr), 0);
    EXPECT_EQ(folder.read("a.txt"), "first");
    EXPECT_EQ(folder.read("b.txt"), "second");
    for (TollanFILE *file : {first, second, reader}) EXPECT_EQ(tollan_fclose(file), 0);
}

TEST_F(StreamTest, BadStreamsAndArgumentsFailWithoutHarm)
{
    int notAStream[40] = {};
    TollanFILE *fake = reinterpret_cast<TollanFILE *>(notAStream);
    char buffer[8];
    for (TollanFILE *stream : {static_cast<TollanFILE *>(nullptr), fake}) {
        EXPECT_TRUE(failedWith(tollan_fgetc(stream) == TOLLAN_EOF, EINVAL));
        EXPECT_TRUE(failedWith(tollan_fputc('a', stream) == TOLLAN_EOF, EINVAL));
        EXPECT_TRUE(failedWith(tollan_fread(buffer, 1, 1, stream) == 0, EINVAL));
        EXPECT_TRUE(failedWith(tollan_fclose(stream) == TOLLAN_EOF, EINVAL));
        EXPECT_TRUE(failedWith(tollan_ftell(stream) == -1, EINVAL));
        EXPECT_TRUE(failedWith(tollan_fprintf(stream, "x") < 0, EINVAL));
        EXPECT_EQ(tollan_feof(stream), 0);
    }
    TollanFILE *file = tollan_fopen(folder.write("bad.txt", "abc").c_str(), "rb");
    EXPECT_TRUE(failedWith(tollan_fread(buffer, SIZE_MAX / 2, 3, file) == 0, EINVAL));
    EXPECT_TRUE(failedWith(tollan_fgets(buffer, 1, file) == nullptr, EINVAL));
    ASSERT_EQ(tollan_fclose(file), 0);
    EXPECT_TRUE(failedWith(tollan_fclose(file) == TOLLAN_EOF, EINVAL));
    EXPECT_TRUE(failedWith(tollan_fdopen(-1, "r") == nullptr, EINVAL));
    EXPECT_TRUE(failedWith(tollan_fdopen(3000, "r") == nullptr, EBADF));
}

TEST_F(StreamTest, LowLevelFilesRefuseTheStandardNumbersWhereTheyMustNot)
{
    EXPECT_TRUE(failedWith(tollan_close(1) == -1, EBADF));
    EXPECT_TRUE(failedWith(tollan_close(-1) == -1, EBADF));
    EXPECT_EQ(tollan_lseek(0, 10, TOLLAN_SEEK_SET), 0);
    EXPECT_EQ(tollan_eof(2), 0);
    char byte = 0;
    EXPECT_TRUE(failedWith(tollan_read(1, &byte, 1) == -1, EBADF));
    EXPECT_TRUE(failedWith(tollan_write(0, "x", 1) == -1, EBADF));
    EXPECT_TRUE(failedWith(tollan_open(folder.path("f").c_str(), 4096, 0) == -1, EINVAL));
    EXPECT_TRUE(failedWith(tollan_sopen(folder.path("f").c_str(), TOLLAN_O_READ, 4, 0) == -1, EINVAL));

    const std::string path = folder.path("low.bin");
    const int descriptor = tollan_open(path.c_str(), TOLLAN_O_WRITE | TOLLAN_O_CREAT | TOLLAN_O_BINARY, 0666);
    ASSERT_GE(descriptor, 3);
    EXPECT_EQ(tollan_write(descriptor, "hello", 5), 5);
    EXPECT_TRUE(failedWith(tollan_read(descriptor, &byte, 1) == -1, EBADF));
    EXPECT_TRUE(failedWith(
        tollan_open(path.c_str(), TOLLAN_O_WRITE | TOLLAN_O_CREAT | TOLLAN_O_EXCL, 0666) == -1, EEXIST));
    // fdopen takes the descriptor over; fclose closes it.
    TollanFILE *file = tollan_fdopen(descriptor, "ab");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(tollan_fputs(" world", file), 0);
    EXPECT_EQ(tollan_fclose(file), 0);
    EXPECT_TRUE(failedWith(tollan_close(descriptor) == -1, EBADF));
    EXPECT_EQ(folder.read("low.bin"), "hello world");
}

TEST_F(StreamTest, TemporaryNamesCountUpSkippingTakenNamesAndStopAtTheLimit)
{
    tollan::stdc::resetTemporaryNames();
    char first[TOLLAN_L_tmpnam];
    ASSERT_NE(tollan_tmpnam(first), nullptr);
    const std::string stem(first, std::string(first).size() - 3);
    EXPECT_EQ(std::string(first).substr(stem.size()), "000");
    // The next name is taken by a file: it is skipped.
    tollan_fclose(tollan_fopen((stem + "001").c_str(), "w"));
    EXPECT_EQ(std::string(tollan_tmpnam(nullptr)), stem + "002");
    tollan_remove((stem + "001").c_str());

    TollanFILE *scratch = tollan_tmpfile();
    ASSERT_NE(scratch, nullptr);
    const std::string scratchName = reinterpret_cast<tollan::stdc::Stream *>(scratch)->temporaryName;
    EXPECT_EQ(scratchName, stem + "003");
    EXPECT_EQ(tollan_fputs("gone", scratch), 0);
    EXPECT_EQ(tollan_fclose(scratch), 0);
    EXPECT_EQ(tollan_rename(scratchName.c_str(), (stem + "x").c_str()), -1);  // removed at close

    int calls = 3;  // tmpfile made the third
    while (++calls < 999) ASSERT_NE(tollan_tmpnam(nullptr), nullptr) << calls;
    TOLLAN_ERRNO = 0;
    EXPECT_TRUE(failedWith(tollan_tmpnam(nullptr) == nullptr, EINVAL));  // the 999th call
    EXPECT_EQ(std::string(tollan_tmpnam(nullptr)), stem + "999");
    EXPECT_TRUE(failedWith(tollan_tmpnam(nullptr) == nullptr, EEXIST));  // numbers used up
    tollan::stdc::resetTemporaryNames();
}

TEST_F(StreamTest, RenameNeverReplacesAndRemoveRefusesBadPaths)
{
    const std::string from = folder.write("from.txt", "1");
    const std::string to = folder.write("to.txt", "2");
    EXPECT_TRUE(failedWith(tollan_rename(from.c_str(), to.c_str()) == -1, EEXIST));
    EXPECT_EQ(tollan_remove(to.c_str()), 0);
    EXPECT_EQ(tollan_rename(from.c_str(), to.c_str()), 0);
    EXPECT_EQ(folder.read("to.txt"), "1");
    EXPECT_TRUE(failedWith(tollan_remove(from.c_str()) == -1, ENOENT));
    EXPECT_TRUE(failedWith(tollan_remove("") == -1, EINVAL));
}

}  // namespace
