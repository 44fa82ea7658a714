// Failing devices: errors in the middle of reads and writes, devices that
// vanish, and system calls that are interrupted or would block.
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <random>
#include <string>
#include <thread>

#include <tollan/rs232.h>

#include "fixtures/pty_pair.h"
#include "fixtures/stopwatch.h"
#include "fixtures/system_call_faults.h"

using tollan::testing::FaultHits;
using tollan::testing::PtyPair;
using tollan::testing::Stopwatch;
using tollan::testing::SystemCall;
using tollan::testing::SystemCallFaults;

namespace {

constexpr int kPort = 31;
constexpr int kForever = SystemCallFaults::kForever;

// A queued write that the writing thread fails: its result is the count
// queued, or the error when the thread failed before the call returned.
bool writeFailsNowOrLater(int32_t result)
{
    return result == 4 || result == ZOR_RS232_SYSTEM_ERROR;
}

class FailingLine : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(OpenComConfig(kPort, pty_.device().c_str(), 115200, 0, 8, 1, 0, 0), 0);
        ASSERT_EQ(SetComTime(kPort, 5.0), 0);
    }
    void TearDown() override { CloseCom(kPort); }

    // Queues a write that the writing thread then fails with `error`: the
    // device takes nothing at once, so the bytes are queued, and the thread's
    // write fails. Returns ComWrt's result once the thread has failed.
    int32_t queueAFailingWrite(int error)
    {
        const int before = faults_.calls(SystemCall::write);
        faults_.fail(SystemCall::write, EAGAIN, {.times = 1});
        faults_.fail(SystemCall::write, error, {.times = 1, .skip = 1});
        const int32_t result = ComWrt(kPort, "lost", 4);
        for (int i = 0; i < 2000 && faults_.calls(SystemCall::write) < before + 2; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return result;
    }

    PtyPair pty_;
    // Watches the port's device from its open on; faults are added by each test.
    SystemCallFaults faults_{pty_.device()};
};

TEST_F(FailingLine, AReadThatFailsWhileWaitingEndsAtOnceWithTheError)
{
    for (const int error : {EIO, ENXIO}) {
        SCOPED_TRACE(error);
        faults_.fail(SystemCall::read, error, {.times = 1});
        int32_t result = 0;
        std::string got(10, '\0');
        Stopwatch watch;
        std::thread reader([&] { result = ComRd(kPort, got.data(), got.size()); });
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        ASSERT_TRUE(pty_.send("x"));
        reader.join();
        EXPECT_EQ(result, ZOR_RS232_SYSTEM_ERROR);
        EXPECT_EQ(rs232err, ZOR_RS232_SYSTEM_ERROR);
        EXPECT_LT(watch.elapsedMs(), 2000);
        // The byte that woke the read is still there for the next one.
        EXPECT_EQ(ComRdByte(kPort), 'x');
    }
}

TEST_F(FailingLine, AFailedQueuedWriteIsReportedOnceAndDropsTheQueue)
{
    // The writing thread's failure is reported by the write itself when it
    // comes that soon, or else later, once.
    EXPECT_TRUE(writeFailsNowOrLater(queueAFailingWrite(EIO)));
    EXPECT_EQ(ReturnRS232Err(), ZOR_RS232_SYSTEM_ERROR);
    EXPECT_EQ(GetOutQLen(kPort), 0);  // reported once, and the queue is empty
    EXPECT_EQ(ReturnRS232Err(), 0);

    // The same, seen by the next call on the port.
    if (queueAFailingWrite(ENXIO) == 4) {
        EXPECT_EQ(GetOutQLen(kPort), ZOR_RS232_SYSTEM_ERROR);
    }
    EXPECT_EQ(GetOutQLen(kPort), 0);

    // The line works on.
    EXPECT_EQ(ComWrt(kPort, "kept", 4), 4);
    EXPECT_EQ(pty_.receive(4), "kept");
    EXPECT_EQ(pty_.drain(), "");
}

// The device goes away under an open port (an adapter pulled out).
TEST(VanishedDevice, FailsEveryTransferAndStillCloses)
{
    PtyPair pty;
    {
        SystemCallFaults faults(pty.device());
        ASSERT_EQ(OpenComConfig(kPort, pty.device().c_str(), 115200, 0, 8, 1, 0, 0), 0);
        for (SystemCall call : {SystemCall::read, SystemCall::write, SystemCall::poll, SystemCall::ioctl,
                                SystemCall::tcflush, SystemCall::tcgetattr, SystemCall::tcsetattr})
            faults.fail(call, ENXIO, {.times = kForever});
        Stopwatch watch;
        char byte = 0;
        EXPECT_EQ(ComRd(kPort, &byte, 1), ZOR_RS232_SYSTEM_ERROR);
        EXPECT_LT(watch.elapsedMs(), 1000);
        EXPECT_LT(GetInQLen(kPort), 0);
        if (ComWrt(kPort, "gone", 4) == 4) {
            for (int i = 0; i < 2000 && faults.calls(SystemCall::write) == 0; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            EXPECT_EQ(GetOutQLen(kPort), ZOR_RS232_SYSTEM_ERROR);
        }
        CloseCom(kPort);
    }
    // Whatever the close reported, the port is closed and opens again.
    EXPECT_EQ(GetOutQLen(kPort), ZOR_RS232_PORT_NOT_OPEN);
    ASSERT_EQ(OpenComConfig(kPort, pty.device().c_str(), 115200, 0, 8, 1, 0, 0), 0);
    EXPECT_EQ(ComWrt(kPort, "back", 4), 4);
    EXPECT_EQ(pty.receive(4), "back");
    EXPECT_EQ(CloseCom(kPort), 0);
}

// The far end goes away for real: the line hangs up under a waiting read.
TEST(VanishedDevice, AHangUpEndsAWaitingReadWithAnError)
{
    PtyPair pty;
    ASSERT_EQ(OpenComConfig(kPort, pty.device().c_str(), 115200, 0, 8, 1, 0, 0), 0);
    ASSERT_EQ(SetComTime(kPort, 0.0), 0);  // no time-out: only the hang-up can end the read
    int32_t result = 0;
    std::thread reader([&] {
        char bytes[4];
        result = ComRd(kPort, bytes, sizeof bytes);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    pty.hangUp();
    reader.join();
    EXPECT_EQ(result, ZOR_RS232_SYSTEM_ERROR);
    char line[8];
    EXPECT_EQ(ComRdTerm(kPort, line, sizeof line, '\n'), ZOR_RS232_SYSTEM_ERROR);
    CloseCom(kPort);
    EXPECT_EQ(GetInQLen(kPort), ZOR_RS232_PORT_NOT_OPEN);
}

// Calls that are interrupted, that would block, or that move less than asked
// for, all the way through a transfer in each direction.
TEST_F(FailingLine, InterruptedAndBlockedCallsLoseAndDuplicateNothing)
{
    std::mt19937 random(7);
    std::string bytes(1 << 18, '\0');
    for (char &byte : bytes) byte = static_cast<char>(random());

    for (SystemCall call : {SystemCall::read, SystemCall::write}) {
        faults_.fail(call, EAGAIN, {.times = kForever, .every = 2});
        faults_.fail(call, EINTR, {.times = kForever, .every = 3});
        faults_.limit(call, 7, {.times = kForever, .every = 5});
    }
    faults_.fail(SystemCall::poll, EINTR, {.times = kForever, .every = 4});

    std::string received;
    std::thread instrument([&] { received = pty_.receive(bytes.size()); });
    EXPECT_EQ(ComWrt(kPort, bytes.data(), bytes.size()), static_cast<int32_t>(bytes.size()));
    instrument.join();
    EXPECT_TRUE(received == bytes);

    std::thread sender([&] { pty_.send(bytes); });
    std::string got(bytes.size(), '\0');
    EXPECT_EQ(ComRd(kPort, got.data(), got.size()), static_cast<int32_t>(got.size()));
    sender.join();
    EXPECT_TRUE(got == bytes);
    EXPECT_EQ(ReturnRS232Err(), 0);
    EXPECT_GT(faults_.calls(SystemCall::read), 100);
}

}  // namespace
