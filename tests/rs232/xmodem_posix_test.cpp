// XModem between two ports joined by a relay (which can damage the line),
// against a scripted peer, and against lrzsz's sx and rx.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <tollan/rs232.h>

#include "fixtures/pty_pair.h"
#include "fixtures/pty_relay.h"
#include "fixtures/scratch_folder.h"
#include "rs232/xmodem_check.h"

using tollan::testing::PtyPair;
using tollan::testing::PtyRelay;
using tollan::testing::randomBytes;
using tollan::testing::ScratchFolder;

namespace {

constexpr int kSender = 51;
constexpr int kReceiver = 52;
constexpr char kSoh = 0x01, kEot = 0x04, kAck = 0x06, kCan = 0x18;

// What arrives padded to whole packets.
std::string padded(const std::string &bytes, size_t packet)
{
    std::string out = bytes;
    out.resize((bytes.size() + packet - 1) / packet * packet, '\0');
    return out;
}

// Two ports whose far ends a relay joins; the relay may damage what goes
// from the sender to the receiver.
class Link : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(OpenComConfig(kSender, sender_.device().c_str(), 115200, 0, 8, 1, 4096, 0), 0);
        ASSERT_EQ(OpenComConfig(kReceiver, receiver_.device().c_str(), 115200, 0, 8, 1, 4096, 0), 0);
    }
    void TearDown() override
    {
        CloseCom(kSender);
        CloseCom(kReceiver);
    }
    void configure(double startDelay, int tries, double wait, int packet)
    {
        ASSERT_EQ(XModemConfig(kSender, startDelay, tries, wait, packet), 0);
        ASSERT_EQ(XModemConfig(kReceiver, startDelay, tries, wait, packet), 0);
    }
    // Runs a receiver and a sender at once; the sender starts after `senderDelayMs`.
    std::pair<int32_t, int32_t> transfer(const std::string &from, const std::string &to,
                                         int senderDelayMs = 0)
    {
        int32_t received = 0;
        std::thread receiver([&] { received = XModemReceive(kReceiver, to.c_str()); });
        std::this_thread::sleep_for(std::chrono::milliseconds(senderDelayMs));
        const int32_t sent = XModemSend(kSender, from.c_str());
        receiver.join();
        return {sent, received};
    }

    PtyPair sender_, receiver_;
    PtyRelay relay_{sender_, receiver_};
    ScratchFolder files_{"tollan-xmodem"};
};

TEST_F(Link, OurSenderToOurReceiverInEachPacketSizeAndCheckMode)
{
    struct Case {
        int packet;
        bool crc;
        size_t size;
    };
    for (const Case c : {Case{128, true, 130}, Case{128, false, 3000}, Case{1024, true, 5000},
                         Case{1024, false, 1024}, Case{100, true, 1001}}) {
        SCOPED_TRACE(std::to_string(c.packet) + (c.crc ? " CRC" : " checksum"));
        // A receiver wants CRC first; one that the sender starts to hear only
        // at its second request (NAK) works with checksums.
        configure(c.crc ? 1.0 : 0.6, 2, 1.0, c.packet);
        const std::string bytes = randomBytes(c.size, static_cast<unsigned>(c.size));
        const auto [sent, received] =
            transfer(files_.write("out", bytes), files_.path("in"), c.crc ? 0 : 300);
        EXPECT_EQ(sent, 0);
        EXPECT_EQ(received, 0);
        EXPECT_TRUE(files_.read("in") == padded(bytes, static_cast<size_t>(c.packet)));
    }
    // An empty file is an EOT right after the handshake, and an empty file arrives.
    configure(1.0, 2, 1.0, 128);
    EXPECT_EQ(transfer(files_.write("out", ""), files_.path("in")), std::make_pair(0, 0));
    EXPECT_EQ(files_.read("in"), "");
}

TEST_F(Link, ADamagedLineIsRecoveredFrom)
{
    // Answers are awaited longer than a damaged packet takes to drain.
    configure(1.0, 5, 1.5, 128);
    const std::string bytes = randomBytes(20 * 128, 5);
    // The damage falls on the n-th packet that crosses in one burst: on a
    // loaded machine a packet may cross in pieces, and half a packet dropped
    // leaves data that may read as a packet header with a wrong number, which
    // rightly cancels the transfer.
    struct Case {
        const char *name;
        int packet;
        void (*damage)(std::string &chunk);
    };
    const Case cases[] = {
        {"one byte corrupted", 4, [](std::string &chunk) { chunk[chunk.size() / 2] ^= 0x10; }},
        {"a packet dropped", 6, [](std::string &chunk) { chunk.clear(); }},
        {"a packet duplicated", 8, [](std::string &chunk) { chunk += chunk; }},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        relay_.setDamage([c, packets = 0](std::string &chunk, int) mutable {
            const bool wholePacket = (chunk.size() == 132 || chunk.size() == 133) && chunk[0] == kSoh;
            if (wholePacket && ++packets == c.packet) c.damage(chunk);
        });
        EXPECT_EQ(transfer(files_.write("out", bytes), files_.path("in")), std::make_pair(0, 0));
        EXPECT_TRUE(files_.read("in") == bytes);
    }
}

TEST_F(Link, ACancelEndsBothSides)
{
    configure(1.0, 3, 0.5, 128);
    // The tenth chunk from the sender becomes CAN for the receiver.
    relay_.setDamage([](std::string &chunk, int index) {
        if (index == 10) chunk = std::string(1, kCan);
    });
    const auto [sent, received] = transfer(files_.write("out", randomBytes(40 * 128, 2)), files_.path("in"));
    EXPECT_EQ(received, ZOR_XMODEM_CANCELLED);
    EXPECT_NE(sent, 0);
    // The line has its own settings again, and the ports work on.
    EXPECT_EQ(ComWrt(kSender, "ok", 2), 2);
}

TEST_F(Link, TheProgressCallbackSeesEveryPacketAndMayCancel)
{
    configure(1.0, 3, 0.5, 128);
    struct Seen {
        int calls = 0;
        int32_t packets = 0;
        int64_t bytes = 0;
    } seen;
    const auto callback = [](int32_t port, int32_t packets, int64_t bytes, int32_t, void *data) -> int32_t {
        auto &s = *static_cast<Seen *>(data);
        ++s.calls;
        s.packets = packets;
        s.bytes = bytes;
        return port == kSender && packets == 3 ? 1 : 0;  // the sender stops after three
    };
    ASSERT_EQ(XModemSetProgressCallback(kSender, callback, &seen), 0);
    const auto [sent, received] = transfer(files_.write("out", randomBytes(10 * 128, 4)), files_.path("in"));
    EXPECT_EQ(sent, ZOR_XMODEM_CANCELLED_BY_CALLER);
    EXPECT_EQ(received, ZOR_XMODEM_CANCELLED);
    EXPECT_EQ(seen.calls, 3);
    EXPECT_EQ(seen.bytes, 3 * 128);
    EXPECT_EQ(files_.read("in").size(), 3u * 128);
    EXPECT_STREQ(GetRS232ErrorString(ZOR_XMODEM_CANCELLED_BY_CALLER),
                 "Transfer was cancelled by the progress callback");

    // A receiver that stops is heard by the sender at once, not after its tries.
    ASSERT_EQ(XModemSetProgressCallback(kSender, nullptr, nullptr), 0);
    ASSERT_EQ(XModemConfig(kSender, 1.0, 10, 10.0, 128), 0);
    const auto stopAtOnce = [](int32_t, int32_t, int64_t, int32_t, void *) -> int32_t { return 1; };
    ASSERT_EQ(XModemSetProgressCallback(kReceiver, stopAtOnce, nullptr), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(transfer(files_.write("out", randomBytes(10 * 128, 4)), files_.path("in")),
              std::make_pair(int32_t{ZOR_XMODEM_CANCELLED}, int32_t{ZOR_XMODEM_CANCELLED_BY_CALLER}));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));

    // Removed, the transfer runs to its end.
    ASSERT_EQ(XModemSetProgressCallback(kReceiver, nullptr, nullptr), 0);
    EXPECT_EQ(transfer(files_.write("out", "x"), files_.path("in")), std::make_pair(0, 0));
}

TEST(XModem, ConfigurationChecksAndTheReceiversRequests)
{
    PtyPair peer;
    ASSERT_EQ(OpenComConfig(53, peer.device().c_str(), 9600, 2, 7, 2, 512, 0), 0);
    EXPECT_EQ(XModemConfig(53, -1.0, 10, 10.0, 128), ZOR_XMODEM_INVALID_START_DELAY);
    EXPECT_EQ(XModemConfig(53, 1.0, -1, 10.0, 128), ZOR_XMODEM_INVALID_TRIES);
    EXPECT_EQ(XModemConfig(53, 1.0, 10, -1.0, 128), ZOR_XMODEM_INVALID_WAIT_PERIOD);
    EXPECT_EQ(XModemConfig(53, 1.0, 10, 2147483.648, 128), ZOR_XMODEM_INVALID_WAIT_PERIOD);
    EXPECT_EQ(XModemConfig(53, 1.0, 10, 10.0, -1), ZOR_XMODEM_INVALID_PACKET_SIZE);
    EXPECT_EQ(XModemConfig(53, 1.0, 10, 10.0, 600), ZOR_XMODEM_PACKET_TOO_LONG);
    EXPECT_EQ(XModemConfig(0, 1.0, 10, 10.0, 128), ZOR_RS232_INVALID_PORT);
    EXPECT_EQ(XModemReceive(54, "x"), ZOR_RS232_PORT_NOT_OPEN);

    // Ten tries: C five times, then NAK five times, then the receiver gives up.
    ScratchFolder files("tollan-xmodem");
    ASSERT_EQ(XModemConfig(53, 0.05, 10, 10.0, 0), 0);
    EXPECT_EQ(XModemReceive(53, files.path("in").c_str()), ZOR_XMODEM_RECEIVE_RETRIES);
    EXPECT_EQ(peer.drain(), "CCCCC\x15\x15\x15\x15\x15");
    // A sender that never hears a request.
    ASSERT_EQ(XModemConfig(53, 0.05, 3, 0.05, 0), 0);
    EXPECT_EQ(XModemSend(53, files.write("out", "data").c_str()), ZOR_XMODEM_NO_INITIAL_NAK);
    EXPECT_EQ(XModemSend(53, files.path("missing").c_str()), ZOR_XMODEM_FILE_OPEN);
    EXPECT_EQ(XModemReceive(53, files.path("no/such/folder").c_str()), ZOR_XMODEM_FILE_OPEN);
    // The port's own framing is back (a pseudo-terminal shows the stop bits).
    int32_t stopBits = 0;
    EXPECT_EQ(__GetComConfig(53, nullptr, nullptr, nullptr, &stopBits, nullptr, nullptr), 0);
    EXPECT_EQ(stopBits, 2);
    EXPECT_EQ(CloseCom(53), 0);
}

// A peer that sends a packet again (its ACK was lost): it is acknowledged
// and not written twice. Tries spent only on repeats receive nothing: that
// is a failure, never a success that shifts the numbers of later packets.
TEST(XModem, ARepeatedPacketIsAcknowledgedAndWrittenOnce)
{
    const auto packet = [](unsigned char number, char fill) {
        std::string data(128, fill);
        const uint16_t crc =
            tollan::rs232::crc16Xmodem(reinterpret_cast<const unsigned char *>(data.data()), data.size());
        return std::string{kSoh, static_cast<char>(number), static_cast<char>(~number)} + data +
               static_cast<char>(crc >> 8) + static_cast<char>(crc & 0xFF);
    };
    struct Case {
        int tries;
        std::vector<std::pair<int, char>> packets;
        int32_t result;
        std::string file;
    };
    const Case cases[] = {
        {3, {{1, 'a'}, {1, 'a'}, {2, 'b'}}, 0, std::string(128, 'a') + std::string(128, 'b')},
        {1, {{1, 'a'}, {1, 'a'}}, ZOR_XMODEM_RECEIVE_RETRIES, std::string(128, 'a')},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.tries);
        PtyPair peer;
        ScratchFolder files("tollan-xmodem");
        ASSERT_EQ(OpenComConfig(55, peer.device().c_str(), 115200, 0, 8, 1, 512, 0), 0);
        ASSERT_EQ(XModemConfig(55, 1.0, c.tries, 1.0, 128), 0);
        int32_t result = 1;
        std::thread receiver([&] { result = XModemReceive(55, files.path("in").c_str()); });
        EXPECT_EQ(peer.receive(1), "C");
        for (const auto &[number, fill] : c.packets) {
            peer.send(packet(static_cast<unsigned char>(number), fill));
            EXPECT_EQ(peer.receive(1, 3000), std::string(1, kAck));
        }
        if (c.result == 0) {
            peer.send(std::string(1, kEot));
            EXPECT_EQ(peer.receive(1), std::string(1, kAck));
        }
        receiver.join();
        EXPECT_EQ(result, c.result);
        EXPECT_EQ(files.read("in"), c.file);
        EXPECT_EQ(CloseCom(55), 0);
    }
}

// lrzsz on a second pseudo-terminal pair, its terminal end as the program's
// standard input and output, joined to the port's pair by a relay.
class Lrzsz : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (access("/usr/bin/sx", X_OK) != 0 || access("/usr/bin/rx", X_OK) != 0) GTEST_SKIP() << "no lrzsz";
        ASSERT_EQ(OpenComConfig(kPort, line_.device().c_str(), 115200, 0, 8, 1, 4096, 0), 0);
    }
    void TearDown() override
    {
        if (!IsSkipped()) CloseCom(kPort);
    }
    pid_t start(std::vector<std::string> arguments)
    {
        const pid_t child = fork();
        if (child == 0) {
            const int terminal = ::open(program_.device().c_str(), O_RDWR);
            dup2(terminal, 0);
            dup2(terminal, 1);
            const int quiet = ::open("/dev/null", O_WRONLY);
            dup2(quiet, 2);
            std::vector<char *> argv;
            for (std::string &argument : arguments) argv.push_back(argument.data());
            argv.push_back(nullptr);
            execv(argv[0], argv.data());
            _exit(127);
        }
        return child;
    }
    static int finish(pid_t child)
    {
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    static constexpr int kPort = 56;
    PtyPair line_, program_;
    PtyRelay relay_{line_, program_};
    ScratchFolder files_{"tollan-xmodem"};
};

TEST_F(Lrzsz, SxSendsToOurReceiver)
{
    for (const bool oneK : {false, true}) {
        SCOPED_TRACE(oneK ? "1K" : "128");
        const std::string bytes = randomBytes(oneK ? 10000 : 3000, oneK ? 8 : 9);
        ASSERT_EQ(XModemConfig(kPort, 2.0, 5, 5.0, 128), 0);
        std::vector<std::string> arguments{"/usr/bin/sx"};
        if (oneK) arguments.push_back("-k");
        arguments.push_back(files_.write("out", bytes));
        const pid_t sx = start(arguments);
        EXPECT_EQ(XModemReceive(kPort, files_.path("in").c_str()), 0);
        // A close at once does not cut off the ACK that sx waits for last.
        EXPECT_EQ(CloseCom(kPort), 0);
        EXPECT_EQ(finish(sx), 0);
        ASSERT_EQ(OpenComConfig(kPort, line_.device().c_str(), 115200, 0, 8, 1, 4096, 0), 0);
        const std::string got = files_.read("in");
        ASSERT_GE(got.size(), bytes.size());
        EXPECT_TRUE(got.compare(0, bytes.size(), bytes) == 0);
    }
}

TEST_F(Lrzsz, OurSenderSendsToRx)
{
    for (const bool crc : {false, true}) {
        SCOPED_TRACE(crc ? "CRC" : "checksum");
        const std::string bytes = randomBytes(3000, crc ? 10 : 11);
        // rx flushes its terminal after its last ACK, so the ACK of EOT may be
        // lost: short tries keep that end quick, and the bytes are what counts.
        ASSERT_EQ(XModemConfig(kPort, 5.0, 2, 1.5, 128), 0);
        std::vector<std::string> arguments{"/usr/bin/rx"};
        if (crc) arguments.push_back("-c");
        arguments.push_back(files_.path("in"));
        const pid_t rx = start(arguments);
        const int32_t sent = XModemSend(kPort, files_.write("out", bytes).c_str());
        EXPECT_TRUE(sent == 0 || sent == ZOR_XMODEM_NO_EOT_ACK) << sent;
        EXPECT_EQ(finish(rx), 0);
        EXPECT_TRUE(files_.read("in") == padded(bytes, 128));
    }
}

}  // namespace
