// The standard I/O pipe's writer on POSIX against a reader of the test's own
// at the socket that stands for the pipe: the records, a reader that is not
// there yet or went away, failing and short sends, long writes, threads, and
// a child of fork().
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/posix/monitor_channel.h"
#include "platform/posix/system_calls.h"
#include "platform/standard_io_pipe.h"

namespace {

using namespace tollan::platform;
namespace posix = tollan::platform::posix;

constexpr int kWaitMs = 5000;

struct Record {
    char kind = 0;  // 0: no whole record came
    std::string bytes;
    bool operator==(const Record &) const = default;
};

// A descriptor closed with its owner.
struct Socket {
    int fd = -1;
    explicit Socket(int descriptor) : fd(descriptor) {}
    ~Socket() { close(); }
    void close()
    {
        if (fd >= 0) ::close(fd);
        fd = -1;
    }
};

// The reader's end: a socket bound at the pipe's path; until it listens, a
// connect there is refused.
class Reader {
public:
    explicit Reader(bool listening = true)
    {
        char name[kStandardIoPipeNameSize];
        standardIoPipeName(static_cast<uint32_t>(getpid()), name);
        path_ = posix::pipeSocketPath(name);
        EXPECT_TRUE(posix::makePipeDirectory());
        unlink(path_.c_str());
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path_.c_str(), path_.size() + 1);
        EXPECT_EQ(bind(listener_.fd, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        if (listening) listen();
    }
    ~Reader() { unlink(path_.c_str()); }
    void listen() { EXPECT_EQ(::listen(listener_.fd, 8), 0); }
    // The next connection of the writer; -1 when none comes within waitMs.
    int accept(int waitMs = kWaitMs)
    {
        pollfd polled{listener_.fd, POLLIN, 0};
        return poll(&polled, 1, waitMs) == 1 ? accept4(listener_.fd, nullptr, nullptr, SOCK_CLOEXEC) : -1;
    }

private:
    Socket listener_{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::string path_;
};

// Up to `count` bytes; fewer when the connection ends or stays quiet for waitMs.
std::string receive(int fd, size_t count, int waitMs = kWaitMs)
{
    std::string bytes(count, '\0');
    size_t got = 0;
    pollfd polled{fd, POLLIN, 0};
    while (got < count && poll(&polled, 1, waitMs) == 1) {
        const ssize_t part = read(fd, bytes.data() + got, count - got);
        if (part <= 0) break;
        got += static_cast<size_t>(part);
    }
    bytes.resize(got);
    return bytes;
}

Record nextRecord(int fd)
{
    const std::string header = receive(fd, 5);
    if (header.size() != 5) return {};
    uint32_t length = 0;
    for (int i = 4; i >= 1; --i) length = length << 8 | static_cast<unsigned char>(header[i]);
    std::string bytes = receive(fd, length);
    if (bytes.size() != length) return {};
    return {header[0], std::move(bytes)};
}

// The writer closed its end: the reader reads the end at once.
bool endedByWriter(int fd)
{
    char byte;
    pollfd polled{fd, POLLIN, 0};
    return poll(&polled, 1, kWaitMs) == 1 && read(fd, &byte, 1) == 0;
}

void write(int descriptor, const std::string &bytes)
{
    writeStandardIoPipe(descriptor, bytes.data(), bytes.size());
}

// Runs `work` on a thread of its own and waits kWaitMs for it. A writer
// that hangs ends the test program: nothing could stop it any more.
template <typename Work>
void expectReturnsInTime(Work work)
{
    auto finished = std::make_shared<std::promise<void>>();
    std::future<void> done = finished->get_future();
    std::thread([finished, work] {
        work();
        finished->set_value();
    }).detach();
    if (done.wait_for(std::chrono::milliseconds(kWaitMs)) == std::future_status::ready) return;
    std::fprintf(stderr, "a write to the standard I/O pipe hangs\n");
    std::abort();
}

class StandardIoPipe : public ::testing::Test {
protected:
    void SetUp() override { setStandardIoPipe(true); }
    void TearDown() override
    {
        setStandardIoPipe(false);
        closeStandardIoPipe();
    }
};

TEST_F(StandardIoPipe, EachWriteIsOneRecordTaggedWithItsStreamOnOneKeptConnection)
{
    Reader reader;
    const struct {
        int descriptor;
        std::string bytes;
    } kWrites[] = {{1, "out1\n"}, {2, "err1\n"}, {1, "out2"}, {2, std::string("nul\0and\xff", 8)}};
    for (const auto &written : kWrites) write(written.descriptor, written.bytes);
    // Nothing for any other descriptor, for no bytes, or with the switch off.
    write(0, "in");
    write(3, "file");
    writeStandardIoPipe(1, "none", 0);
    setStandardIoPipe(false);
    write(1, "off");
    setStandardIoPipe(true);
    write(1, std::string(300, 'x'));

    Socket connection(reader.accept());
    ASSERT_GE(connection.fd, 0);
    for (const auto &written : kWrites)
        EXPECT_EQ(nextRecord(connection.fd), (Record{written.descriptor == 1 ? '1' : '2', written.bytes}));
    EXPECT_EQ(receive(connection.fd, 5), std::string("1\x2c\x01\0\0", 5));  // the length is little-endian
    EXPECT_EQ(receive(connection.fd, 300), std::string(300, 'x'));
    EXPECT_EQ(reader.accept(0), -1);

    // Closed, the connection ends; the next write opens it again.
    closeStandardIoPipe();
    EXPECT_TRUE(endedByWriter(connection.fd));
    write(2, "again");
    Socket reopened(reader.accept());
    EXPECT_EQ(nextRecord(reopened.fd), (Record{'2', "again"}));
}

TEST_F(StandardIoPipe, AFailedConnectKeepsNothingAndTheNextWriteTriesAgain)
{
    errno = EDOM;
    write(1, "nobody there");  // no socket at all
    EXPECT_EQ(errno, EDOM);
    Reader reader(false);
    errno = EDOM;
    write(1, "refused");  // a socket that does not listen refuses
    EXPECT_EQ(errno, EDOM);
    reader.listen();
    write(1, "heard");
    Socket connection(reader.accept());
    EXPECT_EQ(nextRecord(connection.fd), (Record{'1', "heard"}));
    EXPECT_EQ(receive(connection.fd, 1, 100), "");
}

std::atomic<int> brokenPipeSignals{0};

TEST_F(StandardIoPipe, AReaderThatGoesAwayNeitherSignalsNorHoldsTheWriterAndANewOneIsFound)
{
    struct sigaction counting {};
    struct sigaction previous {};
    counting.sa_handler = [](int) { brokenPipeSignals.fetch_add(1); };
    sigaction(SIGPIPE, &counting, &previous);
    Reader reader;
    const std::string longWrite(4 << 20, 'w');
    // The reader takes a little of a long write, then goes away while the
    // writer waits for it to take more.
    expectReturnsInTime([&] {
        std::jthread writer([&] { write(1, longWrite); });
        Socket connection(reader.accept());
        EXPECT_EQ(receive(connection.fd, 10), std::string("1\0\0\x10\0wwwww", 10));
    });
    EXPECT_EQ(brokenPipeSignals.load(), 0);
    sigaction(SIGPIPE, &previous, nullptr);

    // That connection was dropped: the next write is on a new one.
    write(2, "found");
    Socket next(reader.accept());
    EXPECT_EQ(nextRecord(next.fd), (Record{'2', "found"}));
}

// Sends through the system-call table that are interrupted, short, or fail.
struct SendFaults {
    static inline std::atomic<int> calls{0};
    static inline std::atomic<int> failing{0};  // the next sends that fail with ECONNRESET
    posix::SystemCalls table = posix::realSystemCalls();

    SendFaults()
    {
        calls = 0;
        table.send = [](int fd, const void *buffer, size_t count, int flags) -> ssize_t {
            const int call = calls.fetch_add(1);
            if (failing > 0 && failing.fetch_sub(1) > 0) {
                errno = ECONNRESET;
                return -1;
            }
            if (call % 2 == 1) {
                errno = EINTR;
                return -1;
            }
            return posix::realSystemCalls().send(fd, buffer, std::min<size_t>(count, 3), flags);
        };
        posix::replaceSystemCalls(&table);
    }
    ~SendFaults() { posix::replaceSystemCalls(nullptr); }
};

TEST_F(StandardIoPipe, InterruptedAndShortSendsMakeWholeRecordsAndAFailedSendDropsTheConnection)
{
    Reader reader;
    SendFaults faults;
    write(1, "interrupted and short");
    write(2, "e");
    EXPECT_GE(SendFaults::calls.load(), 23);  // 12 sends of 3 bytes at most, 11 interrupted between them
    Socket connection(reader.accept());
    EXPECT_EQ(nextRecord(connection.fd), (Record{'1', "interrupted and short"}));
    EXPECT_EQ(nextRecord(connection.fd), (Record{'2', "e"}));

    SendFaults::failing = 1;
    write(1, "lost");
    EXPECT_TRUE(endedByWriter(connection.fd));
    write(1, "on a new connection");
    Socket next(reader.accept());
    EXPECT_EQ(nextRecord(next.fd), (Record{'1', "on a new connection"}));
}

TEST_F(StandardIoPipe, AWriteOfMoreThanAMebibyteGoesAsRecordsOfOneMebibyteInOrder)
{
    Reader reader;
    std::string longWrite((5 << 20) / 2, '\0');
    for (size_t i = 0; i < longWrite.size(); ++i) longWrite[i] = static_cast<char>(i * 7 % 251);
    std::jthread writer([&] { write(2, longWrite); });
    Socket connection(reader.accept());  // closed first, so a writer left waiting returns
    std::string got;
    std::vector<size_t> sizes;
    while (got.size() < longWrite.size()) {
        const Record record = nextRecord(connection.fd);
        if (record.kind != '2') break;
        sizes.push_back(record.bytes.size());
        got += record.bytes;
    }
    EXPECT_EQ(sizes, (std::vector<size_t>{1 << 20, 1 << 20, 1 << 19}));
    EXPECT_TRUE(got == longWrite);
}

TEST_F(StandardIoPipe, WritesOfSeveralThreadsArriveWholeAndInEachThreadsOrder)
{
    constexpr int kThreads = 4;
    constexpr int kWrites = 150;
    // Lengths up to a few kilobytes, so that sends are cut short now and then.
    const auto text = [](int thread, int index) {
        return std::to_string(thread) + " " + std::to_string(index) + " " +
               std::string(static_cast<size_t>(index * 37 % 4000), static_cast<char>('a' + thread));
    };
    // Gone in the reverse order: the connection, then the reader (a writer
    // left waiting returns), then the writers.
    std::vector<std::jthread> writers;
    Reader reader;
    for (int thread = 0; thread < kThreads; ++thread)
        writers.emplace_back([&, thread] {
            for (int index = 0; index < kWrites; ++index) write(1 + thread % 2, text(thread, index));
        });
    Socket connection(reader.accept());
    int next[kThreads] = {};
    for (int received = 0; received < kThreads * kWrites; ++received) {
        const Record record = nextRecord(connection.fd);
        int thread = -1;
        int index = -1;
        ASSERT_EQ(std::sscanf(record.bytes.c_str(), "%d %d", &thread, &index), 2) << received;
        ASSERT_TRUE(thread >= 0 && thread < kThreads) << record.bytes;
        EXPECT_EQ(index, next[thread]++);
        EXPECT_EQ(record, (Record{thread % 2 == 0 ? '1' : '2', text(thread, index)}));
    }
}

TEST_F(StandardIoPipe, AChildOfForkWritesToThePipeOfItsOwnIdNotIntoItsParents)
{
    Reader reader;
    write(1, "parent before");
    Socket connection(reader.accept());
    EXPECT_EQ(nextRecord(connection.fd), (Record{'1', "parent before"}));
    const pid_t child = fork();
    if (child == 0) {
        write(1, "child");
        _exit(0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    write(1, "parent after");
    EXPECT_EQ(nextRecord(connection.fd), (Record{'1', "parent after"}));
}

}  // namespace
