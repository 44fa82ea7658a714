// XModem file transfers on pseudo-terminal pairs: 1 MiB of random data from
// a sender on one pair to a receiver on another, the two controlling ends
// joined by a relay thread, in three modes (checksum with 128-byte packets,
// CRC with 128-byte packets, CRC with 1024-byte packets):
// - the library at both ends (XModemSend and XModemReceive on two ports);
// - lrzsz's sx and rx at both ends, each with its pair's terminal end as
//   standard input and output;
// - the library's sender to rx, and sx to the library's receiver;
// - the relayed link itself with plain write and read on the terminal ends:
//   before each transfer with the library at both ends, 1-byte round trips
//   and the throughput of one direction over that transfer's own relay, from
//   which compare-xmodem works out the least time the transfer could take;
//   and, apart, a packet with its ACK, as each end answers at its quickest.
// A transfer's time runs from the receiver's request that started it (the
// last byte the relay passed from the receiver before the sender's first
// packet header) until the receiver is done: XModemReceive has returned
// (with the library at both ends, XModemSend too) or rx has exited. The
// relay also notes the sender's first EOT, and for every packet how long
// each end took to answer (its "turn", one way through the relay and back
// included). Every received file is checked against what was sent: a
// difference other than zero padding after the end fails the run loudly.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include <tollan/rs232.h>

#include "pty_line.h"

namespace {

using bench::openPlainTerminal;
using bench::plainRead;
using bench::plainWrite;
using bench::Pty;

using Clock = std::chrono::steady_clock;

constexpr int32_t kSenderPort = 61;
constexpr int32_t kReceiverPort = 62;
constexpr int32_t kBaud = 115200;  // a pseudo-terminal moves bytes as fast as it can whatever the rate
constexpr int32_t kQueue = 4096;   // at least the largest packet
constexpr size_t kFileBytes = size_t{1} << 20;
constexpr size_t kStreamChunk = size_t{64} << 10;
constexpr auto kGiveUp = std::chrono::seconds(60);            // a transfer that takes longer fails the run
constexpr auto kSenderLead = std::chrono::milliseconds(200);  // the sender waits before the receiver asks
constexpr const char *kSx = "/usr/bin/sx";
constexpr const char *kRx = "/usr/bin/rx";

constexpr unsigned char kSoh = 0x01;
constexpr unsigned char kStx = 0x02;
constexpr unsigned char kEot = 0x04;
constexpr unsigned char kAck = 0x06;
constexpr unsigned char kNak = 0x15;
constexpr unsigned char kCrcRequest = 'C';

enum Way : int64_t { kOursToOurs = 0, kLrzszToLrzsz = 1, kOursToRx = 2, kSxToOurs = 3 };
enum Mode : int64_t { kChecksum128 = 0, kCrc128 = 1, kCrc1K = 2 };

bool crcMode(Mode mode)
{
    return mode != kChecksum128;
}
int32_t packetSize(Mode mode)
{
    return mode == kCrc1K ? 1024 : 128;
}

double secondsBetween(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double>(to - from).count();
}

// What the relay saw of a transfer. The stream from the sender is followed
// packet by packet (a clean link never needs more); times are those of the
// relay's reads.
struct Observed {
    std::optional<Clock::time_point> request;    // last byte from the receiver before the first header
    std::optional<Clock::time_point> eot;        // the first EOT from the sender
    std::optional<Clock::time_point> eotAnswer;  // the receiver's first ACK after it
    int64_t headers = 0;
    int64_t acks = 0;
    int64_t naks = 0;
    int64_t strays = 0;           // anything else from either side once the transfer runs
    int64_t refusedRequests = 0;  // C requests the relay did not pass on
    // Per packet, in microseconds: from the relay having the whole packet to
    // its having the receiver's ACK (the receiver's turn), and from that ACK
    // to its having the whole next packet (the sender's turn). Each turn
    // holds one way through the relay and back.
    std::vector<double> receiverTurns;
    std::vector<double> senderTurns;
};

double median(std::vector<double> values)
{
    if (values.empty()) return 0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double microsecondsBetween(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double, std::micro>(to - from).count();
}

// Copies between two controlling ends, both ways, as fast as the pairs move
// bytes: one thread polls both, and a direction whose bytes cannot all be
// written yet reads no more until they are. In checksum mode it keeps the
// receiver's C requests from the sender, as a sender that knows no CRC
// would ignore them, so that the receiver falls back to NAK.
class Relay {
public:
    Relay(int senderEnd, int receiverEnd, uint32_t checkSize, bool refuseCrc)
        : ends_{senderEnd, receiverEnd},
          checkSize_(checkSize),
          refuseCrc_(refuseCrc),
          stop_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
        for (Direction &d : directions_) d.bytes.resize(kStreamChunk);
        directions_[0].from = 0;
        directions_[0].to = 1;
        directions_[1].from = 1;
        directions_[1].to = 0;
        thread_ = std::thread([this] { run(); });
    }
    ~Relay() { stop(); }
    Relay(const Relay &) = delete;
    Relay &operator=(const Relay &) = delete;

    // Takes the link down: whatever arrives from then on is dropped.
    void cut() { cut_ = true; }
    void stop()
    {
        if (!thread_.joinable()) return;
        const uint64_t one = 1;
        (void)!::write(stop_, &one, sizeof one);
        thread_.join();
        ::close(stop_);
    }
    bool failed() const { return failed_; }
    // Read after stop().
    const Observed &observed() const { return seen_; }

private:
    struct Direction {
        size_t from = 0;
        size_t to = 0;
        std::vector<unsigned char> bytes;
        size_t at = 0;
        size_t end = 0;
    };

    void run()
    {
        for (;;) {
            pollfd waits[3] = {{ends_[0], 0, 0}, {ends_[1], 0, 0}, {stop_, POLLIN, 0}};
            for (const Direction &d : directions_) {
                if (d.at < d.end)
                    waits[d.to].events |= POLLOUT;
                else
                    waits[d.from].events |= POLLIN;
            }
            if (::poll(waits, 3, -1) < 0) {
                if (errno == EINTR) continue;
                failed_ = true;
                return;
            }
            if (waits[2].revents != 0) return;
            for (size_t i = 0; i < 2; ++i) {
                if (!move(directions_[i], i == 0, waits)) {
                    failed_ = true;
                    return;
                }
            }
        }
    }

    bool move(Direction &d, bool fromSender, const pollfd *waits)
    {
        if (d.at == d.end && (waits[d.from].revents & (POLLIN | POLLERR | POLLHUP)) != 0) {
            const ssize_t n = ::read(ends_[d.from], d.bytes.data(), d.bytes.size());
            if (n < 0) return errno == EAGAIN || errno == EINTR;
            if (n == 0) return false;
            d.at = 0;
            d.end = cut_ ? 0
                         : (fromSender ? fromSenderSeen(d.bytes.data(), static_cast<size_t>(n))
                                       : fromReceiverSeen(d.bytes.data(), static_cast<size_t>(n)));
        }
        while (d.at < d.end) {
            const ssize_t n = ::write(ends_[d.to], d.bytes.data() + d.at, d.end - d.at);
            if (n < 0) return errno == EAGAIN || errno == EINTR;
            d.at += static_cast<size_t>(n);
        }
        return true;
    }

    // Follows the packets; returns how many bytes to pass on (all of them).
    size_t fromSenderSeen(const unsigned char *bytes, size_t count)
    {
        const Clock::time_point now = Clock::now();
        for (size_t i = 0; i < count;) {
            if (inPacket_ > 0) {
                const size_t skip = std::min(inPacket_, count - i);
                inPacket_ -= skip;
                i += skip;
                if (inPacket_ == 0) {
                    packetEnd_ = now;
                    if (answer_) seen_.senderTurns.push_back(microsecondsBetween(*answer_, now));
                    answer_.reset();
                }
                continue;
            }
            const unsigned char byte = bytes[i++];
            if (byte == kSoh || byte == kStx) {
                inPacket_ = 2 + (byte == kStx ? 1024u : 128u) + checkSize_;
                ++seen_.headers;
                started_ = true;
            } else if (byte == kEot) {
                if (!seen_.eot) seen_.eot = now;
                started_ = true;
            } else if (started_) {
                ++seen_.strays;
            }
        }
        return count;
    }

    // Notes requests and answers; returns how many bytes to pass on.
    size_t fromReceiverSeen(unsigned char *bytes, size_t count)
    {
        const Clock::time_point now = Clock::now();
        if (!started_) {
            if (refuseCrc_) {
                const size_t kept =
                    static_cast<size_t>(std::remove(bytes, bytes + count, kCrcRequest) - bytes);
                seen_.refusedRequests += static_cast<int64_t>(count - kept);
                count = kept;
            }
            if (count > 0) seen_.request = now;
            return count;
        }
        for (size_t i = 0; i < count; ++i) {
            if (bytes[i] == kAck) {
                ++seen_.acks;
                if (packetEnd_) seen_.receiverTurns.push_back(microsecondsBetween(*packetEnd_, now));
                packetEnd_.reset();
                answer_ = now;
                if (seen_.eot && !seen_.eotAnswer) seen_.eotAnswer = now;
            } else if (bytes[i] == kNak) {
                ++seen_.naks;
            } else {
                ++seen_.strays;
            }
        }
        return count;
    }

    int ends_[2];
    Direction directions_[2];
    uint32_t checkSize_;
    bool refuseCrc_;
    int stop_;
    size_t inPacket_ = 0;
    std::optional<Clock::time_point> packetEnd_;  // a whole packet has passed, not yet answered
    std::optional<Clock::time_point> answer_;     // an ACK has passed, the next packet not yet whole
    bool started_ = false;
    Observed seen_;
    std::atomic<bool> cut_{false};
    std::atomic<bool> failed_{false};
    std::thread thread_;
};

// ---- the link with plain write and read ------------------------------------

// Two pairs joined by a relay, their terminal ends opened the plain way.
class PlainLink {
public:
    explicit PlainLink(benchmark::State &state)
    {
        if (!a_.ok() || !b_.ok()) {
            state.SkipWithError("no pseudo-terminal pairs");
            return;
        }
        near_ = openPlainTerminal(a_.device());
        far_ = openPlainTerminal(b_.device());
        if (near_ < 0 || far_ < 0) state.SkipWithError("cannot open the terminal ends");
    }
    ~PlainLink()
    {
        stop();
        if (near_ >= 0) ::close(near_);
        if (far_ >= 0) ::close(far_);
    }
    PlainLink(const PlainLink &) = delete;
    PlainLink &operator=(const PlainLink &) = delete;

    bool ok() const { return near_ >= 0 && far_ >= 0; }
    // Stops the relay and returns what it saw.
    const Observed &stop()
    {
        relay_.stop();
        return relay_.observed();
    }
    int near() const { return near_; }
    int far() const { return far_; }

private:
    Pty a_{true}, b_{true};
    Relay relay_{a_.master(), b_.master(), 2, false};
    int near_ = -1;
    int far_ = -1;
};

// What a transfer does at its least: a packet with a CRC and its ACK, sent
// with plain write and read (the packet written whole, read whole).
void BM_LinkPacketExchange(benchmark::State &state)
{
    PlainLink link(state);
    if (!link.ok()) return;
    const auto mode = static_cast<Mode>(state.range(0));
    const auto size = static_cast<size_t>(packetSize(mode)) + 5;
    std::atomic<bool> stopping{false};
    std::thread peer([&] {
        std::vector<unsigned char> packet(size);
        const unsigned char ack = kAck;
        while (plainRead(link.far(), packet.data(), size) && !stopping)
            if (!plainWrite(link.far(), &ack, 1)) return;
    });
    std::vector<unsigned char> packet(size, 0x33);
    packet[0] = mode == kCrc1K ? kStx : kSoh;
    for (auto _ : state) {
        ++packet[1];
        packet[2] = static_cast<unsigned char>(~packet[1]);
        unsigned char answer = 0;
        if (!plainWrite(link.near(), packet.data(), size) || !plainRead(link.near(), &answer, 1) ||
            answer != kAck) {
            state.SkipWithError("the exchange failed");
            break;
        }
    }
    stopping = true;
    plainWrite(link.near(), packet.data(), size);
    peer.join();
    const Observed &seen = link.stop();
    state.counters["receiver_us"] = median(seen.receiverTurns);
    state.counters["sender_us"] = median(seen.senderTurns);
}
BENCHMARK(BM_LinkPacketExchange)
    ->ArgName("mode")
    ->Arg(kCrc128)
    ->Arg(kCrc1K)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);

// ---- transfers ---------------------------------------------------------------

std::string libraryError(const char *what, int32_t error)
{
    return std::string(what) + ": " + std::to_string(error) + " (" + GetRS232ErrorString(error) + ")";
}

class Folder {
public:
    Folder()
        : path_(std::filesystem::temp_directory_path() / ("tollan-bench-xmodem-" + std::to_string(getpid())))
    {
        std::filesystem::create_directories(path_);
    }
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
    std::string file(const char *name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

const std::string &randomFile()
{
    static const std::string bytes = [] {
        std::mt19937 random(20240611);
        std::string out(kFileBytes, '\0');
        for (char &byte : out) byte = static_cast<char>(random());
        return out;
    }();
    return bytes;
}

// Empty when `got` is `sent` followed by nothing but zeros.
std::string differences(const std::string &sent, const std::string &got)
{
    char text[200];
    if (got.size() < sent.size()) {
        std::snprintf(text, sizeof text, "%zu of %zu bytes arrived", got.size(), sent.size());
        return text;
    }
    const auto differ = std::mismatch(sent.begin(), sent.end(), got.begin());
    if (differ.first != sent.end()) {
        std::snprintf(text, sizeof text, "byte %zu arrived as 0x%02x instead of 0x%02x",
                      static_cast<size_t>(differ.first - sent.begin()),
                      static_cast<unsigned char>(*differ.second), static_cast<unsigned char>(*differ.first));
        return text;
    }
    const auto padding = std::find_if(got.begin() + static_cast<std::ptrdiff_t>(sent.size()), got.end(),
                                      [](char c) { return c != 0; });
    if (padding != got.end()) {
        std::snprintf(text, sizeof text, "%zu bytes arrived for %zu, not all of the rest zeros", got.size(),
                      sent.size());
        return text;
    }
    return {};
}

std::string readFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// A program of lrzsz with a pair's terminal end as its standard input and
// output (its messages go nowhere); its end is watched through a process
// descriptor, so that the moment it exits is known.
class Program {
public:
    Program(std::vector<std::string> arguments, const Pty &pty)
    {
        std::vector<char *> argv;
        for (std::string &argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        const char *device = pty.device();
        pid_ = fork();
        if (pid_ == 0) {
            const int terminal = ::open(device, O_RDWR | O_NOCTTY);
            const int quiet = ::open("/dev/null", O_WRONLY);
            if (terminal < 0 || quiet < 0 || dup2(terminal, 0) < 0 || dup2(terminal, 1) < 0 ||
                dup2(quiet, 2) < 0)
                _exit(126);
            execv(argv[0], argv.data());
            _exit(127);
        }
        if (pid_ > 0) handle_ = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
    }
    ~Program() { kill(); }
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    bool started() const { return pid_ > 0 && handle_ >= 0; }

    // Waits until the program exits or `deadline` passes; true when it
    // exited, with the moment and its status.
    bool waitUntil(Clock::time_point deadline)
    {
        if (ended_) return true;
        for (;;) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
            pollfd wait{handle_, POLLIN, 0};
            const int ready = ::poll(&wait, 1, static_cast<int>(std::max<int64_t>(left.count(), 0)));
            if (ready < 0 && errno == EINTR) continue;
            if (ready <= 0) return false;
            endedAt_ = Clock::now();
            reap();
            return true;
        }
    }
    Clock::time_point endedAt() const { return endedAt_; }
    // The exit status, or -1 for a program ended by a signal.
    int status() const { return status_; }
    // Ends a program that is still running; true when it had to be killed.
    bool kill()
    {
        if (pid_ <= 0 || ended_) return false;
        ::kill(pid_, SIGKILL);
        reap();
        return true;
    }

private:
    void reap()
    {
        int status = 0;
        while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
        }
        status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        ended_ = true;
        if (handle_ >= 0) ::close(handle_);
        handle_ = -1;
    }

    pid_t pid_ = -1;
    int handle_ = -1;
    bool ended_ = false;
    int status_ = -1;
    Clock::time_point endedAt_;
};

// One of the library's transfers on its own thread; its result and the
// moment it returned.
class Call {
public:
    template <class Body>
    explicit Call(Body body)
        : thread_([this, body] {
              const int32_t result = body();
              const Clock::time_point now = Clock::now();
              std::lock_guard hold(lock_);
              result_ = result;
              endedAt_ = now;
              done_ = true;
              ended_.notify_all();
          })
    {
    }
    ~Call() { join(); }
    Call(const Call &) = delete;
    Call &operator=(const Call &) = delete;

    // Waits until the call returns or `deadline` passes.
    bool waitUntil(Clock::time_point deadline)
    {
        std::unique_lock hold(lock_);
        return ended_.wait_until(hold, deadline, [this] { return done_; });
    }
    void join()
    {
        if (thread_.joinable()) thread_.join();
    }
    int32_t result() const { return result_; }
    Clock::time_point endedAt() const { return endedAt_; }

private:
    std::mutex lock_;
    std::condition_variable ended_;
    bool done_ = false;
    int32_t result_ = 0;
    Clock::time_point endedAt_;
    std::thread thread_;
};

bool openPort(benchmark::State &state, int32_t port, const Pty &pty)
{
    const int32_t opened = OpenComConfig(port, pty.device(), kBaud, 0, 8, 1, kQueue, kQueue);
    if (opened != 0) {
        state.SkipWithError(libraryError("OpenComConfig", opened).c_str());
        return false;
    }
    return true;
}

// The library's XModem values for one end. The receiver asks for CRC in the
// first half of its tries and with NAK after: in checksum mode it has two
// tries, the first of which (C) the relay does not pass on. Waits are short
// enough that a transfer stuck on a lost last ACK or a cut link ends soon.
bool configure(benchmark::State &state, int32_t port, bool receiver, Mode mode, double waitPeriod,
               int32_t tries)
{
    const double startDelay = receiver ? (crcMode(mode) ? 1.0 : 0.2) : 10.0;
    const int32_t configured = XModemConfig(port, startDelay, tries, waitPeriod, packetSize(mode));
    if (configured != 0) {
        state.SkipWithError(libraryError("XModemConfig", configured).c_str());
        return false;
    }
    return true;
}

std::vector<std::string> sxArguments(Mode mode, const std::string &file)
{
    std::vector<std::string> arguments{kSx};
    if (mode == kCrc1K) arguments.emplace_back("-k");
    arguments.push_back(file);
    return arguments;
}

std::vector<std::string> rxArguments(Mode mode, const std::string &file)
{
    std::vector<std::string> arguments{kRx};
    if (crcMode(mode)) arguments.emplace_back("-c");
    arguments.push_back(file);
    return arguments;
}

// The relayed link of a transfer, measured with plain write and read on the
// two terminal ends just before the transfer runs over it: the mean of 2000
// 1-byte round trips (a thread echoes at the far end), and the throughput of
// 1 MiB one way, written in 64 KiB pieces.
struct LinkCosts {
    double roundTripUs = 0;
    double bytesPerSecond = 0;
};

std::optional<LinkCosts> measureLink(const Pty &nearPair, const Pty &farPair)
{
    constexpr int kEchoes = 2000;
    const int nearEnd = openPlainTerminal(nearPair.device());
    const int farEnd = openPlainTerminal(farPair.device());
    std::optional<LinkCosts> costs;
    if (nearEnd >= 0 && farEnd >= 0) {
        std::thread echo([&] {
            unsigned char byte = 0;
            for (int i = 0; i < kEchoes; ++i)
                if (!plainRead(farEnd, &byte, 1) || !plainWrite(farEnd, &byte, 1)) return;
        });
        bool echoed = true;
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < kEchoes && echoed; ++i) {
            unsigned char byte = 'x';
            echoed = plainWrite(nearEnd, &byte, 1) && plainRead(nearEnd, &byte, 1) && byte == 'x';
        }
        const Clock::time_point echoesDone = Clock::now();
        echo.join();
        bool streamed = false;
        if (echoed) {
            std::thread reader([&] {
                std::vector<unsigned char> sink(kStreamChunk);
                bool ok = true;
                for (size_t done = 0; done < kFileBytes && ok; done += kStreamChunk)
                    ok = plainRead(farEnd, sink.data(), kStreamChunk);
                streamed = ok;
            });
            const std::vector<unsigned char> chunk(kStreamChunk, 0x5A);
            const Clock::time_point from = Clock::now();
            bool written = true;
            for (size_t done = 0; done < kFileBytes && written; done += kStreamChunk)
                written = plainWrite(nearEnd, chunk.data(), kStreamChunk);
            reader.join();
            const double seconds = secondsBetween(from, Clock::now());
            if (written && streamed)
                costs = LinkCosts{microsecondsBetween(start, echoesDone) / kEchoes, kFileBytes / seconds};
        }
    }
    if (nearEnd >= 0) ::close(nearEnd);
    if (farEnd >= 0) ::close(farEnd);
    return costs;
}

// What one transfer came to.
struct Outcome {
    std::string failure;    // empty when the file arrived whole and both ends agree
    double seconds = 0;     // from the receiver's request to the receiver done
    double eotSeconds = 0;  // from the request to the sender's first EOT
    bool senderKilled = false;
    Observed seen;
    std::optional<LinkCosts> link;  // with the library at both ends
};

// Runs both ends of one transfer of `from` into `to` over two fresh pairs.
Outcome transfer(benchmark::State &state, Way way, Mode mode, const std::string &from, const std::string &to)
{
    const bool oursSend = way == kOursToOurs || way == kOursToRx;
    const bool oursReceive = way == kOursToOurs || way == kSxToOurs;
    Outcome outcome;
    Pty senderPair(true), receiverPair(true);
    if (!senderPair.ok() || !receiverPair.ok()) {
        outcome.failure = "no pseudo-terminal pairs";
        return outcome;
    }
    Relay relay(senderPair.master(), receiverPair.master(), crcMode(mode) ? 2 : 1, !crcMode(mode));
    if (way == kOursToOurs) {
        outcome.link = measureLink(senderPair, receiverPair);
        if (!outcome.link) {
            outcome.failure = "the link failed before the transfer";
            return outcome;
        }
    }
    if (oursSend && !openPort(state, kSenderPort, senderPair)) return outcome;
    if (oursReceive && !openPort(state, kReceiverPort, receiverPair)) {
        if (oursSend) CloseCom(kSenderPort);
        return outcome;
    }
    // With rx at the far end our sender may wait in vain for the ACK of the
    // EOT (rx flushes its line after sending it): two short tries.
    const bool configured =
        (!oursSend || configure(state, kSenderPort, false, mode, way == kOursToRx ? 1.0 : 5.0,
                                way == kOursToRx ? 2 : 3)) &&
        (!oursReceive || configure(state, kReceiverPort, true, mode, 5.0, crcMode(mode) ? 3 : 2));
    if (configured) {
        const Clock::time_point deadline = Clock::now() + kGiveUp;
        std::optional<Call> ourSender, ourReceiver;
        std::optional<Program> sx, rx;
        if (oursSend)
            ourSender.emplace([&] { return XModemSend(kSenderPort, from.c_str()); });
        else
            sx.emplace(sxArguments(mode, from), senderPair);
        std::this_thread::sleep_for(kSenderLead);
        if (oursReceive)
            ourReceiver.emplace([&] { return XModemReceive(kReceiverPort, to.c_str()); });
        else
            rx.emplace(rxArguments(mode, to), receiverPair);

        std::optional<Clock::time_point> finished;
        if ((sx && !sx->started()) || (rx && !rx->started())) {
            outcome.failure = "cannot start sx or rx";
        } else if (ourReceiver) {
            if (ourReceiver->waitUntil(deadline)) finished = ourReceiver->endedAt();
        } else if (rx->waitUntil(deadline)) {
            finished = rx->endedAt();
        }
        if (finished && ourSender && ourReceiver) {
            if (ourSender->waitUntil(deadline))
                finished = std::max(*finished, ourSender->endedAt());
            else
                finished.reset();
        }
        if (!finished) {
            if (outcome.failure.empty())
                outcome.failure = "the transfer took longer than " + std::to_string(kGiveUp.count()) + " s";
            relay.cut();
        }
        // The sender's own end is not timed: it may wait out a lost last ACK.
        if (sx && !sx->waitUntil(Clock::now() + std::chrono::milliseconds(100)))
            outcome.senderKilled = sx->kill();
        if (rx) rx->kill();
        if (ourSender) ourSender->join();
        if (ourReceiver) ourReceiver->join();
        relay.stop();
        outcome.seen = relay.observed();
        const Observed &seen = outcome.seen;

        std::string &failure = outcome.failure;
        if (failure.empty() && ourReceiver && ourReceiver->result() != 0)
            failure = libraryError("XModemReceive", ourReceiver->result());
        if (failure.empty() && rx && rx->status() != 0)
            failure = "rx ended with " + std::to_string(rx->status());
        if (failure.empty() && ourSender && ourSender->result() != 0 &&
            !(way == kOursToRx && ourSender->result() == ZOR_XMODEM_NO_EOT_ACK))
            failure = libraryError("XModemSend", ourSender->result());
        if (failure.empty() && sx && !outcome.senderKilled && sx->status() != 0)
            failure = "sx ended with " + std::to_string(sx->status());
        if (failure.empty() && relay.failed()) failure = "the relay failed";
        if (failure.empty() && (!seen.request || !seen.eot))
            failure = "the relay missed the request or the EOT";
        if (failure.empty()) {
            const std::string wrong = differences(randomFile(), readFile(to));
            if (!wrong.empty()) {
                std::fprintf(stderr, "XMODEM TRANSFER CORRUPTED THE FILE: %s\n", wrong.c_str());
                failure = "the received file differs: " + wrong;
            }
        }
        if (failure.empty()) {
            outcome.seconds = secondsBetween(*seen.request, *finished);
            outcome.eotSeconds = secondsBetween(*seen.request, *seen.eot);
        }
    }
    if (oursSend) CloseCom(kSenderPort);
    if (oursReceive) CloseCom(kReceiverPort);
    return outcome;
}

// One transfer of the random file in the given way and mode.
void BM_Transfer(benchmark::State &state)
{
    const auto way = static_cast<Way>(state.range(0));
    const auto mode = static_cast<Mode>(state.range(1));
    if (way != kOursToOurs && (access(kSx, X_OK) != 0 || access(kRx, X_OK) != 0)) {
        state.SkipWithError("lrzsz (sx and rx) is not installed");
        return;
    }
    const Folder folder;
    const std::string from = folder.file("out");
    const std::string to = folder.file("in");
    std::ofstream(from, std::ios::binary) << randomFile();
    for (auto _ : state) {
        std::filesystem::remove(to);
        const Outcome outcome = transfer(state, way, mode, from, to);
        if (state.error_occurred()) break;  // a library call has reported it
        if (!outcome.failure.empty()) {
            state.SkipWithError(outcome.failure.c_str());
            break;
        }
        const Observed &seen = outcome.seen;
        state.SetIterationTime(outcome.seconds);
        state.counters["eot_s"] = outcome.eotSeconds;
        state.counters["after_eot_s"] = outcome.seconds - outcome.eotSeconds;
        state.counters["eot_acked"] = seen.eotAnswer ? 1 : 0;
        state.counters["receiver_us"] = median(seen.receiverTurns);
        state.counters["sender_us"] = median(seen.senderTurns);
        const int64_t packets = static_cast<int64_t>(kFileBytes) / packetSize(mode);
        state.counters["resent"] = static_cast<double>(seen.headers - packets);
        state.counters["naks"] = static_cast<double>(seen.naks);
        state.counters["strays"] = static_cast<double>(seen.strays);
        state.counters["sender_killed"] = outcome.senderKilled ? 1 : 0;
        if (outcome.link) {
            state.counters["link_rt_us"] = outcome.link->roundTripUs;
            state.counters["link_bytes_per_s"] = outcome.link->bytesPerSecond;
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kFileBytes));
}
BENCHMARK(BM_Transfer)
    ->ArgNames({"way", "mode"})
    ->ArgsProduct({{kOursToOurs, kLrzszToLrzsz, kOursToRx, kSxToOurs}, {kChecksum128, kCrc128, kCrc1K}})
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
