// Reading and writing through ports on pseudo-terminal pairs.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <tollan/fmtio.h>
#include <tollan/rs232.h>

#include "fixtures/pty_pair.h"
#include "fixtures/pty_relay.h"
#include "fixtures/scratch_folder.h"
#include "fixtures/stopwatch.h"

using tollan::testing::PtyPair;
using tollan::testing::PtyRelay;
using tollan::testing::randomBytes;
using tollan::testing::Stopwatch;

namespace {

constexpr int kPort = 11;

// A port open on a fresh pseudo-terminal pair.
class Line : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(open(), 0); }
    void TearDown() override { EXPECT_EQ(CloseCom(kPort), 0); }
    int32_t open(int dataBits = 8, int outQueue = 0)
    {
        return OpenComConfig(kPort, pty_.device().c_str(), 115200, 0, dataBits, 1, 0, outQueue);
    }
    std::string read(size_t count)
    {
        std::string bytes(count, '\0');
        const int32_t got = ComRd(kPort, bytes.data(), count);
        bytes.resize(got < 0 ? 0 : static_cast<size_t>(got));
        return bytes;
    }
    std::string readTerm(int terminator, size_t count = 100)
    {
        std::string bytes(count, '\0');
        const int32_t got = ComRdTerm(kPort, bytes.data(), count, terminator);
        bytes.resize(got < 0 ? 0 : static_cast<size_t>(got));
        return bytes;
    }
    // Sends from the instrument and waits until the port has it all.
    void arrive(const std::string &bytes)
    {
        ASSERT_TRUE(pty_.send(bytes));
        for (int i = 0; i < 500 && GetInQLen(kPort) < static_cast<int32_t>(bytes.size()); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    PtyPair pty_;
};

}  // namespace

TEST_F(Line, ReadsEndAtTheSilenceTimeOutWithWhatCame)
{
    char buffer[16];
    EXPECT_EQ(ComRd(kPort, buffer, 0), 0);
    EXPECT_EQ(ComRd(kPort, nullptr, 4), ZOR_RS232_NULL_BUFFER);
    EXPECT_EQ(ComRd(kPort, buffer, uint64_t{1} << 31), ZOR_RS232_INVALID_COUNT);
    EXPECT_EQ(ComRdTerm(kPort, buffer, uint64_t{1} << 32, 10), ZOR_RS232_INVALID_COUNT);

    ASSERT_EQ(SetComTime(kPort, 0.2), 0);
    arrive("abcd");
    Stopwatch watch;
    EXPECT_EQ(read(10), "abcd");
    EXPECT_EQ(rs232err, ZOR_RS232_TIMEOUT);
    EXPECT_GE(watch.elapsedMs(), 190);
    EXPECT_EQ(ComRdByte(kPort), ZOR_RS232_TIMEOUT);

    // Bytes that keep coming restart the time-out.
    std::thread trickle([&] {
        for (char c = 'a'; c < 'h'; ++c) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            pty_.send(&c, 1);
        }
    });
    EXPECT_EQ(read(7), "abcdefg");
    EXPECT_EQ(rs232err, 0);
    trickle.join();
}

TEST_F(Line, ATimeOutOfZeroWaitsForTheBytesHoweverLongTheyTake)
{
    ASSERT_EQ(SetComTime(kPort, 0.0), 0);
    std::thread late([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        pty_.send("late!");
    });
    Stopwatch watch;
    EXPECT_EQ(read(5), "late!");
    EXPECT_GE(watch.elapsedMs(), 250);
    late.join();
}

TEST_F(Line, ReadToTerminatorSwallowsTheLineEndsPartnerAndKeepsAnyOtherByte)
{
    ASSERT_EQ(SetComTime(kPort, 0.2), 0);
    arrive("AB\r\nC");
    EXPECT_EQ(readTerm('\r'), "AB");
    EXPECT_EQ(ComRdByte(kPort), 'C');

    arrive("AB\rC");
    EXPECT_EQ(readTerm('\r'), "AB");
    EXPECT_EQ(GetInQLen(kPort), 1);  // the byte held back counts
    EXPECT_EQ(read(1), "C");

    arrive("xy\n\rz\n\n");
    EXPECT_EQ(readTerm('\n'), "xy");
    EXPECT_EQ(readTerm('\n'), "z");
    EXPECT_EQ(readTerm('\n'), "");  // the second LF is no partner of the first
    EXPECT_EQ(rs232err, 0);

    arrive("12;\n34");
    EXPECT_EQ(readTerm(';'), "12");
    EXPECT_EQ(read(3), "\n34");

    // The count ends the read before the terminator does.
    arrive("abcdef\r");
    EXPECT_EQ(readTerm('\r', 4), "abcd");
    EXPECT_EQ(readTerm('\r'), "ef");

    // Nothing comes: the time-out ends it with what was stored.
    arrive("part");
    EXPECT_EQ(readTerm('\r'), "part");
    EXPECT_EQ(rs232err, ZOR_RS232_TIMEOUT);
}

TEST_F(Line, TerminatorsCompareUnderTheDataBitMask)
{
    ASSERT_EQ(open(7), 0);
    ASSERT_EQ(SetComTime(kPort, 2.0), 0);
    // With 7 data bits 0x8D is CR.
    arrive("ok\r\nnext");
    EXPECT_EQ(readTerm(0x8D), "ok");
    EXPECT_EQ(read(4), "next");
    // A terminator whose masked value is 0 ends a read at once when nothing waits.
    Stopwatch watch;
    EXPECT_EQ(readTerm(0x80), "");
    EXPECT_EQ(readTerm(0), "");
    EXPECT_LT(watch.elapsedMs(), 1000);
}

TEST_F(Line, WritesGoThroughTheQueueOrStraightToTheLine)
{
    const std::string bytes = randomBytes(100000, 1);
    // More than a pseudo-terminal buffers: the instrument reads while the port writes.
    std::string received;
    std::thread instrument([&] { received = pty_.receive(bytes.size()); });
    EXPECT_EQ(ComWrt(kPort, bytes.data(), bytes.size()), static_cast<int32_t>(bytes.size()));
    instrument.join();
    EXPECT_TRUE(received == bytes);
    EXPECT_EQ(ComWrtByte(kPort, 0x141), 1);  // only the low byte goes
    EXPECT_EQ(pty_.receive(1), "A");
    EXPECT_EQ(ComWrt(kPort, nullptr, 1), ZOR_RS232_NULL_BUFFER);
    EXPECT_EQ(ComWrt(kPort, bytes.data(), 0), 0);

    // A negative output queue size: no writing thread, nothing is ever queued.
    ASSERT_EQ(open(8, -1), 0);
    EXPECT_EQ(ComWrt(kPort, bytes.data(), 5000), 5000);
    EXPECT_EQ(GetOutQLen(kPort), 0);
    EXPECT_TRUE(pty_.receive(5000) == bytes.substr(0, 5000));
}

// Writes that the queue takes whole (each at most its size) while the line
// is full. At 1200 baud the thread writes chunks of a few dozen bytes, so
// the queue wraps around again and again; every byte still arrives once and
// in order.
TEST_F(Line, QueuedWritesWrapAroundTheQueueInOrder)
{
    ASSERT_EQ(OpenComConfig(kPort, pty_.device().c_str(), 1200, 0, 8, 1, 0, 1000), 0);
    const std::string bytes = randomBytes(300000, 4);
    std::string received;
    std::thread instrument([&] {
        // Starts late, so that the line and then the queue fill up first.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        received = pty_.receive(bytes.size());
    });
    const size_t sizes[] = {1, 7, 333, 999, 1000, 64, 501};
    size_t sent = 0;
    for (size_t i = 0; sent < bytes.size(); ++i) {
        const size_t size = std::min(sizes[i % std::size(sizes)], bytes.size() - sent);
        ASSERT_EQ(ComWrt(kPort, bytes.data() + sent, size), static_cast<int32_t>(size)) << sent;
        sent += size;
    }
    instrument.join();
    EXPECT_TRUE(received == bytes);
}

TEST_F(Line, AFullQueueThatDoesNotDrainTimesOut)
{
    ASSERT_EQ(open(8, 30), 0);
    ASSERT_EQ(SetComTime(kPort, 0.3), 0);
    // The instrument reads nothing: the line, then the queue, fill up.
    const std::string bytes = randomBytes(1 << 20, 2);
    const int32_t taken = ComWrt(kPort, bytes.data(), bytes.size());
    EXPECT_EQ(rs232err, ZOR_RS232_TIMEOUT);
    ASSERT_GT(taken, 0);
    ASSERT_LT(taken, static_cast<int32_t>(bytes.size()));
    EXPECT_EQ(GetOutQLen(kPort), 30);
    EXPECT_EQ(ComWrtByte(kPort, 'x'), 0);
    EXPECT_EQ(rs232err, ZOR_RS232_TIMEOUT);
    // Once read, every byte taken arrives, once and in order.
    EXPECT_TRUE(pty_.receive(static_cast<size_t>(taken)) == bytes.substr(0, static_cast<size_t>(taken)));
    EXPECT_EQ(pty_.drain(), "");
}

// Without a writing thread the caller's own write waits on the full line.
// It ends at the port's time-out with what the line took; the next write
// waits for the line again instead of finding it refused, and every byte
// arrives once.
TEST_F(Line, ASynchronousWriteToAFullLineEndsAtItsTimeOut)
{
    ASSERT_EQ(open(8, -1), 0);
    ASSERT_EQ(SetComTime(kPort, 0.3), 0);
    const std::string bytes = randomBytes(1 << 20, 5);
    const Stopwatch watch;
    const int32_t taken = ComWrt(kPort, bytes.data(), bytes.size());
    EXPECT_EQ(rs232err, ZOR_RS232_TIMEOUT);
    EXPECT_LT(watch.elapsedMs(), 5000);
    ASSERT_GT(taken, 0);
    ASSERT_LT(taken, static_cast<int32_t>(bytes.size()));
    std::string received;
    std::thread instrument([&] { received = pty_.receive(bytes.size()); });
    const auto rest = static_cast<int32_t>(bytes.size()) - taken;
    EXPECT_EQ(ComWrt(kPort, bytes.data() + taken, static_cast<size_t>(rest)), rest);
    instrument.join();
    EXPECT_TRUE(received == bytes);
}

TEST_F(Line, FlushesDropWhatWaitsInEitherDirection)
{
    ASSERT_EQ(SetComTime(kPort, 0.3), 0);
    arrive("stale");
    EXPECT_EQ(GetInQLen(kPort), 5);
    EXPECT_EQ(FlushInQ(kPort), 0);
    EXPECT_EQ(GetInQLen(kPort), 0);
    arrive("fresh");
    EXPECT_EQ(read(5), "fresh");

    ASSERT_EQ(open(8, 4096), 0);
    const std::string bytes = randomBytes(300000, 3);
    ComWrt(kPort, bytes.data(), bytes.size());
    EXPECT_GT(GetOutQLen(kPort), 0);
    EXPECT_EQ(FlushOutQ(kPort), 0);
    EXPECT_EQ(GetOutQLen(kPort), 0);
    // What reached the line before the flush is a prefix of what was written.
    const std::string got = pty_.drain(100);
    EXPECT_TRUE(got == bytes.substr(0, got.size()));
    EXPECT_EQ(ComWrt(kPort, "after", 5), 5);
    EXPECT_EQ(pty_.receive(5), "after");
}

TEST_F(Line, StatusLineStateAndBreak)
{
    EXPECT_EQ(GetComStat(kPort), 0);
    EXPECT_EQ(GetComLineStatus(kPort) & ~0xF0, 0);
    EXPECT_EQ(ComBreak(kPort, -1), ZOR_RS232_INVALID_BREAK_TIME);
    Stopwatch watch;
    EXPECT_EQ(ComBreak(kPort, 0), 0);
    EXPECT_GE(watch.elapsedMs(), 245);
    EXPECT_EQ(GetComConnectionState(kPort), ZOR_RS232_SYSTEM_ERROR);
}

TEST_F(Line, ComToFileAndComFromFileStopAtTheirTerminator)
{
    const std::string path = (std::filesystem::temp_directory_path() / "tollan-rs232-file.bin").string();
    {
        std::ofstream out(path, std::ios::binary);
        out << "first line\r\nsecond\nthird";
    }
    int32_t file = ZOR_OpenFile(path.c_str(), 0, 2, 0);
    ASSERT_GE(file, 3);
    ASSERT_EQ(SetComTime(kPort, 0.2), 0);
    EXPECT_EQ(ComFromFile(kPort, file, 0, '\r'), 10);
    EXPECT_EQ(pty_.receive(10), "first line");
    // The partner LF went with the CR; the next block starts at "second".
    EXPECT_EQ(ComFromFile(kPort, file, 3, -1), 3);
    EXPECT_EQ(ComFromFile(kPort, file, 0, '\n'), 3);
    EXPECT_EQ(ComFromFile(kPort, file, 0, -1), 5);
    EXPECT_EQ(pty_.receive(11), "secondthird");
    EXPECT_EQ(ComFromFile(kPort, file, -1, -1), ZOR_RS232_INVALID_COUNT);
    EXPECT_EQ(ComFromFile(kPort, 999, 0, -1), ZOR_RS232_BAD_FILE_HANDLE);
    ASSERT_EQ(ZOR_CloseFile(file), 0);

    file = ZOR_OpenFile(path.c_str(), 2, 0, 0);
    ASSERT_GE(file, 3);
    std::string big(600, '\0');
    for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>('A' + i % 26);
    arrive(big + "\r\ntail");
    EXPECT_EQ(ComToFile(kPort, file, 0, '\r'), 601);  // the terminator is taken, not stored
    EXPECT_EQ(read(4), "tail");                       // its partner was swallowed
    arrive("1234567");
    EXPECT_EQ(ComToFile(kPort, file, 3, -1), 3);
    EXPECT_EQ(ComToFile(kPort, file, 0, -1), 4);
    EXPECT_EQ(rs232err, ZOR_RS232_TIMEOUT);
    EXPECT_EQ(ComToFile(kPort, 999, 0, -1), 0);  // nothing came, so nothing was written
    EXPECT_EQ(rs232err, ZOR_RS232_TIMEOUT);
    ASSERT_EQ(ZOR_CloseFile(file), 0);
    std::ifstream in(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), big + "1234567");
    std::filesystem::remove(path);
}

TEST_F(Line, ACloseFromAnotherThreadWaitsForTheReadInProgress)
{
    ASSERT_EQ(SetComTime(kPort, 0.0), 0);
    std::atomic<int32_t> readResult{-1000};
    std::thread reader([&] {
        char buffer[4];
        readResult = ComRd(kPort, buffer, 4);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    std::atomic<bool> closed{false};
    std::thread closer([&] {
        EXPECT_EQ(CloseCom(kPort), 0);
        closed = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(closed);
    pty_.send("done");
    reader.join();
    closer.join();
    EXPECT_EQ(readResult, 4);
    EXPECT_EQ(ComRd(kPort, nullptr, 1), ZOR_RS232_PORT_NOT_OPEN);
    ASSERT_EQ(open(), 0);
}

// 16 MiB from one port through the writing thread, over two lines joined by
// the instrument, into another port: every byte arrives once, in order.
TEST(Rs232RoundTrip, SixteenMebibytesArriveByteExact)
{
    PtyPair out, in;
    ASSERT_EQ(OpenComConfig(21, out.device().c_str(), 115200, 0, 8, 1, 4096, 4096), 0);
    ASSERT_EQ(OpenComConfig(22, in.device().c_str(), 115200, 0, 8, 1, 4096, 4096), 0);
    const std::string bytes = randomBytes(16 << 20, 5);
    const PtyRelay relay(out, in);
    std::string got(bytes.size(), '\0');
    int32_t read = 0;
    std::thread reader([&] { read = ComRd(22, got.data(), got.size()); });
    EXPECT_EQ(ComWrt(21, bytes.data(), bytes.size()), static_cast<int32_t>(bytes.size()));
    reader.join();
    EXPECT_EQ(read, static_cast<int32_t>(bytes.size()));
    EXPECT_TRUE(got == bytes);
    CloseCom(21);
    CloseCom(22);
}

// Eight threads, each on a port of its own, while every thread also looks at
// the other ports: nothing is lost, nothing is mixed up.
TEST(Rs232Concurrency, EightPortsFromEightThreads)
{
    constexpr int kPorts = 8;
    std::vector<std::unique_ptr<PtyPair>> lines;
    for (int i = 0; i < kPorts; ++i) {
        lines.push_back(std::make_unique<PtyPair>());
        ASSERT_EQ(OpenComConfig(100 + i, lines[i]->device().c_str(), 9600, 0, 8, 1, 0, 0), 0);
    }
    std::vector<std::thread> users;
    std::atomic<int> failures{0};
    for (int i = 0; i < kPorts; ++i) {
        users.emplace_back([&, i] {
            const int port = 100 + i;
            const std::string bytes = randomBytes(200000, 10 + i);
            std::thread instrument([&] {
                // The instrument echoes each thousand bytes it gets.
                size_t echoed = 0;
                while (echoed < bytes.size()) {
                    const std::string chunk = lines[i]->receive(1000, 2000);
                    if (chunk.empty()) break;
                    lines[i]->send(chunk);
                    echoed += chunk.size();
                }
            });
            std::string got;
            for (size_t sent = 0; sent < bytes.size(); sent += 1000) {
                if (ComWrt(port, bytes.data() + sent, 1000) != 1000) ++failures;
                std::string part(1000, '\0');
                if (ComRd(port, part.data(), 1000) != 1000) ++failures;
                got += part;
                GetInQLen(100 + (i + 1) % kPorts);
                GetOutQLen(100 + (i + 2) % kPorts);
            }
            instrument.join();
            if (got != bytes) ++failures;
            if (ReturnRS232Err() != 0) ++failures;
        });
    }
    for (std::thread &user : users) user.join();
    EXPECT_EQ(failures, 0);
    for (int i = 0; i < kPorts; ++i) EXPECT_EQ(CloseCom(100 + i), 0);
}
