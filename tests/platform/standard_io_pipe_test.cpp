// The standard I/O pipe's name, which the development environment makes the
// pipe under, and on Windows the pipe itself against a server of the test's
// own (the POSIX writer has standard_io_pipe_posix_test.cpp).
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "platform/standard_io_pipe.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace {

using namespace tollan::platform;

TEST(StandardIoPipeName, IsTheBaseNameASpaceAndTheProcessIdInLowerCaseHex)
{
    char name[kStandardIoPipeNameSize];
    standardIoPipeName(0x1A2B, name);
    EXPECT_STREQ(name, "\\\\.\\pipe\\Vantrel - ZOR Standard IO Pipe 1a2b");
    standardIoPipeName(0xFFFFFFFF, name);
    EXPECT_STREQ(name, "\\\\.\\pipe\\Vantrel - ZOR Standard IO Pipe ffffffff");
}

#ifdef _WIN32

// The environment's end: one instance of the pipe, read in byte mode.
class PipeServer {
public:
    PipeServer()
    {
        char name[kStandardIoPipeNameSize];
        standardIoPipeName(GetCurrentProcessId(), name);
        pipe_ = CreateNamedPipeA(name, PIPE_ACCESS_INBOUND, PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT,
                                 1, 4096, 4096, 0, nullptr);
        EXPECT_NE(pipe_, INVALID_HANDLE_VALUE) << GetLastError();
    }
    ~PipeServer() { CloseHandle(pipe_); }
    PipeServer(const PipeServer &) = delete;
    PipeServer &operator=(const PipeServer &) = delete;

    // Up to `count` bytes, as many as come within five seconds. It never
    // waits in ReadFile, so a writer that sent less cannot hang the test.
    std::string take(size_t count)
    {
        std::string bytes;
        for (int tries = 0; tries < 5000 && bytes.size() < count; ++tries) {
            char buffer[256];
            DWORD got = 0;
            if (available() == 0) {
                Sleep(1);
                continue;
            }
            if (!ReadFile(pipe_, buffer, static_cast<DWORD>(std::min(sizeof buffer, count - bytes.size())),
                          &got, nullptr))
                break;
            bytes.append(buffer, got);
        }
        return bytes;
    }
    DWORD available()
    {
        DWORD waiting = 0;
        return PeekNamedPipe(pipe_, nullptr, 0, nullptr, &waiting, nullptr) ? waiting : 0;
    }
    // The writer closed its end.
    bool ended()
    {
        char byte;
        DWORD got = 0;
        return !ReadFile(pipe_, &byte, 1, &got, nullptr) && GetLastError() == ERROR_BROKEN_PIPE;
    }

private:
    HANDLE pipe_;
};

class StandardIoPipe : public ::testing::Test {
protected:
    void SetUp() override { setStandardIoPipe(true); }
    void TearDown() override
    {
        setStandardIoPipe(false);
        closeStandardIoPipe();
    }
    static void write(int descriptor, const std::string &bytes)
    {
        writeStandardIoPipe(descriptor, bytes.data(), bytes.size());
    }
};

// Closing flushes the client's end, which waits until the server has read
// everything: the tests read before they close.
TEST_F(StandardIoPipe, TheServerReceivesTheRawBytesOfEachWriteAndNothingElse)
{
    PipeServer server;
    write(1, "out1\n");
    write(2, std::string("err\0\xff", 5));
    write(3, "not standard I/O");
    setStandardIoPipe(false);
    write(1, "switched off");
    EXPECT_EQ(server.take(10), std::string("out1\nerr\0\xff", 10));
    EXPECT_EQ(server.available(), 0u);
    closeStandardIoPipe();
    EXPECT_TRUE(server.ended());
}

TEST_F(StandardIoPipe, WithoutAServerAWriteIsSilentAndALaterOneFindsTheServer)
{
    SetLastError(ERROR_INVALID_DATA);
    write(1, "nobody there");
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_DATA));
    PipeServer server;
    write(1, "later");
    EXPECT_EQ(server.take(5), "later");
    EXPECT_EQ(server.available(), 0u);
}

#endif

}  // namespace
