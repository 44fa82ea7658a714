// The serial library on pseudo-terminal pairs, against the system's own
// write and read on the terminal end of the same kind of pair. The benchmark
// plays the instrument on the controlling end; the library (or the plain
// baseline) has the terminal end, opened by its path in raw mode.
// - throughput: ComWrt with a thread draining the instrument end, and ComRd
//   with a thread filling it;
// - a 1-byte request and its answer, with a thread echoing on the
//   instrument end;
// - the processor time of a ComRd that waits 2 s for bytes that never come;
// - 256 ports open at once, each echoing through its writing thread, every
//   byte checked, and the resident memory that an open port costs.
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
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
using bench::waitFor;

using Clock = std::chrono::steady_clock;

constexpr int32_t kPort = 7;
constexpr int32_t kWarmUpPort = 1000;
constexpr int32_t kBaud = 115200;  // a pseudo-terminal moves bytes as fast as it can whatever the rate
constexpr size_t kStreamBytes = size_t{4} << 20;
constexpr size_t kChunk = size_t{64} << 10;
constexpr int kGiveUpMs = 10000;  // a stalled transfer fails instead of hanging the run

enum Way : int64_t { kPlain = 0, kLibrary = 1 };

// Moves exactly `count` bytes through a non-blocking descriptor; false when
// it fails or stalls for kGiveUpMs.
bool readExactly(int fd, unsigned char *buffer, size_t size, size_t count)
{
    while (count > 0) {
        const ssize_t n = ::read(fd, buffer, std::min(size, count));
        if (n > 0) {
            count -= static_cast<size_t>(n);
        } else if (n == 0 || (errno != EAGAIN && errno != EINTR)) {
            return false;
        } else if (!waitFor(fd, POLLIN, kGiveUpMs)) {
            return false;
        }
    }
    return true;
}

bool writeExactly(int fd, const unsigned char *bytes, size_t size, size_t count)
{
    while (count > 0) {
        const ssize_t n = ::write(fd, bytes, std::min(size, count));
        if (n > 0) {
            count -= static_cast<size_t>(n);
        } else if (n == 0 || (errno != EAGAIN && errno != EINTR)) {
            return false;
        } else if (!waitFor(fd, POLLOUT, kGiveUpMs)) {
            return false;
        }
    }
    return true;
}

std::string libraryError(const char *what)
{
    const int32_t error = ReturnRS232Err();
    return std::string(what) + ": " + std::to_string(error) + " (" + GetRS232ErrorString(error) + ")";
}

// 8 data bits, no parity, 1 stop bit, the default input queue; the output
// queue as given (0: the default 512, negative: synchronous writes).
bool openLibraryPort(benchmark::State &state, int32_t port, const Pty &pty, int32_t outputQueue)
{
    if (OpenComConfig(port, pty.device(), kBaud, 0, 8, 1, 0, outputQueue) != 0) {
        state.SkipWithError(libraryError("OpenComConfig").c_str());
        return false;
    }
    return true;
}

// Whichever end the benchmark measures: the library's port or the plain
// descriptor. Closed when the benchmark ends.
class Terminal {
public:
    Terminal(benchmark::State &state, Way way, const Pty &pty, int32_t outputQueue = 0) : way_(way)
    {
        if (!pty.ok()) {
            state.SkipWithError("no pseudo-terminal pair");
            return;
        }
        if (way == kLibrary) {
            ok_ = openLibraryPort(state, kPort, pty, outputQueue);
        } else {
            fd_ = openPlainTerminal(pty.device());
            ok_ = fd_ >= 0;
            if (!ok_) state.SkipWithError("cannot open the terminal end");
        }
    }
    ~Terminal()
    {
        if (way_ == kLibrary && ok_) CloseCom(kPort);
        if (fd_ >= 0) ::close(fd_);
    }
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    bool ok() const { return ok_; }

    bool write(const unsigned char *bytes, size_t count) const
    {
        if (way_ == kPlain) return plainWrite(fd_, bytes, count);
        return ComWrt(kPort, bytes, count) == static_cast<int32_t>(count);
    }
    bool read(unsigned char *buffer, size_t count) const
    {
        if (way_ == kPlain) return plainRead(fd_, buffer, count);
        return ComRd(kPort, buffer, count) == static_cast<int32_t>(count);
    }

private:
    Way way_;
    bool ok_ = false;
    int fd_ = -1;
};

std::vector<unsigned char> pattern(size_t count, unsigned seed)
{
    std::vector<unsigned char> bytes(count);
    for (size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<unsigned char>((i * 131 + (i >> 8) + seed * 29) & 0xFF);
    return bytes;
}

// Writes through the terminal end while a thread drains the instrument end.
void BM_WriteThroughput(benchmark::State &state)
{
    const Way way = static_cast<Way>(state.range(0));
    Pty pty;
    Terminal terminal(state, way, pty, static_cast<int32_t>(state.range(1)));
    if (!terminal.ok()) return;
    const std::vector<unsigned char> chunk = pattern(kChunk, 1);
    for (auto _ : state) {
        std::atomic<bool> drained{false};
        std::thread instrument([&] {
            std::vector<unsigned char> sink(kChunk);
            drained = readExactly(pty.master(), sink.data(), sink.size(), kStreamBytes);
        });
        bool written = true;
        for (size_t done = 0; done < kStreamBytes && written; done += kChunk)
            written = terminal.write(chunk.data(), kChunk);
        instrument.join();
        if (!written || !drained) {
            state.SkipWithError(way == kLibrary ? libraryError("ComWrt").c_str() : "the stream stalled");
            break;
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kStreamBytes));
}

// The library's writes through the default output queue (512 bytes), a
// 64 KiB one, and synchronously (no writing thread); the plain way has no queue.
BENCHMARK(BM_WriteThroughput)
    ->ArgNames({"way", "queue"})
    ->Args({kPlain, 0})
    ->Args({kLibrary, 0})
    ->Args({kLibrary, 65536})
    ->Args({kLibrary, -1})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

// Reads through the terminal end while a thread fills the instrument end.
void BM_ReadThroughput(benchmark::State &state)
{
    const Way way = static_cast<Way>(state.range(0));
    Pty pty;
    Terminal terminal(state, way, pty);
    if (!terminal.ok()) return;
    std::vector<unsigned char> buffer(kChunk);
    for (auto _ : state) {
        std::atomic<bool> sent{false};
        std::thread instrument([&] {
            const std::vector<unsigned char> chunk = pattern(kChunk, 2);
            bool ok = true;
            for (size_t done = 0; done < kStreamBytes && ok; done += kChunk)
                ok = writeExactly(pty.master(), chunk.data(), chunk.size(), kChunk);
            sent = ok;
        });
        bool read = true;
        for (size_t done = 0; done < kStreamBytes && read; done += kChunk)
            read = terminal.read(buffer.data(), kChunk);
        instrument.join();
        if (!read || !sent) {
            state.SkipWithError(way == kLibrary ? libraryError("ComRd").c_str() : "the stream stalled");
            break;
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kStreamBytes));
}

// Reads take what the device holds: the queue sizes play no part.
BENCHMARK(BM_ReadThroughput)
    ->ArgName("way")
    ->Arg(kPlain)
    ->Arg(kLibrary)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

// An instrument that sends back whatever reaches it, on any number of pairs.
// One thread polls them all; a pair's echo waits until the last has gone out
// (nothing is read from a pair while its answer is blocked).
class Echo {
public:
    explicit Echo(std::vector<int> masters)
        : masters_(std::move(masters)),
          pending_(masters_.size()),
          stop_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
        for (Pending &p : pending_) p.bytes.resize(4096);
        thread_ = std::thread([this] { run(); });
    }
    ~Echo() { stop(); }
    Echo(const Echo &) = delete;
    Echo &operator=(const Echo &) = delete;

    // Nothing is polled before this: a pair whose terminal end nobody has
    // opened yet reports a hang-up.
    void start()
    {
        started_ = true;
        started_.notify_one();
    }
    void stop()
    {
        if (!thread_.joinable()) return;
        const uint64_t one = 1;
        (void)!::write(stop_, &one, sizeof one);
        start();
        thread_.join();
        ::close(stop_);
    }
    // Something went wrong on the instrument side (a hang-up, a failed call).
    bool failed() const { return failed_; }

private:
    struct Pending {
        std::vector<unsigned char> bytes;
        size_t from = 0;
        size_t to = 0;
    };

    void run()
    {
        started_.wait(false);
        std::vector<pollfd> waits(masters_.size() + 1);
        for (;;) {
            for (size_t i = 0; i < masters_.size(); ++i) {
                const bool blocked = pending_[i].from < pending_[i].to;
                waits[i] = {masters_[i], static_cast<short>(blocked ? POLLOUT : POLLIN), 0};
            }
            waits.back() = {stop_, POLLIN, 0};
            if (::poll(waits.data(), waits.size(), -1) < 0) {
                if (errno == EINTR) continue;
                failed_ = true;
                return;
            }
            if (waits.back().revents != 0) return;
            for (size_t i = 0; i < masters_.size(); ++i) {
                if (waits[i].revents == 0) continue;
                if (!serve(i)) {
                    failed_ = true;
                    return;
                }
            }
        }
    }

    bool serve(size_t i)
    {
        Pending &p = pending_[i];
        if (p.from == p.to) {
            const ssize_t n = ::read(masters_[i], p.bytes.data(), p.bytes.size());
            if (n < 0) return errno == EAGAIN || errno == EINTR;
            if (n == 0) return false;
            p.from = 0;
            p.to = static_cast<size_t>(n);
        }
        while (p.from < p.to) {
            const ssize_t n = ::write(masters_[i], p.bytes.data() + p.from, p.to - p.from);
            if (n < 0) return errno == EAGAIN || errno == EINTR;
            p.from += static_cast<size_t>(n);
        }
        return true;
    }

    std::vector<int> masters_;
    std::vector<Pending> pending_;
    int stop_;
    std::atomic<bool> started_{false};
    std::atomic<bool> failed_{false};
    std::thread thread_;
};

// A 1-byte request and its 1-byte answer.
void BM_EchoLatency(benchmark::State &state)
{
    const Way way = static_cast<Way>(state.range(0));
    Pty pty;
    Terminal terminal(state, way, pty);
    if (!terminal.ok()) return;
    Echo echo({pty.master()});
    echo.start();
    unsigned char request = 0;
    for (auto _ : state) {
        ++request;
        unsigned char answer = 0;
        if (!terminal.write(&request, 1) || !terminal.read(&answer, 1) || answer != request) {
            state.SkipWithError(way == kLibrary ? libraryError("the echo").c_str() : "the echo failed");
            break;
        }
    }
    echo.stop();
}
BENCHMARK(BM_EchoLatency)
    ->ArgName("way")
    ->Arg(kPlain)
    ->Arg(kLibrary)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);

// A read that waits out a 2 s time-out: the processor time it takes (the
// whole process's, the port's writing thread included).
void BM_ReadTimeoutCpu(benchmark::State &state)
{
    Pty pty;
    Terminal terminal(state, kLibrary, pty);
    if (!terminal.ok()) return;
    if (SetComTime(kPort, 2.0) != 0) {
        state.SkipWithError(libraryError("SetComTime").c_str());
        return;
    }
    for (auto _ : state) {
        unsigned char byte = 0;
        const Clock::time_point start = Clock::now();
        const int32_t got = ComRd(kPort, &byte, 1);
        const double waited = std::chrono::duration<double>(Clock::now() - start).count();
        if (got != 0 || ReturnRS232Err() != ZOR_RS232_TIMEOUT || waited < 1.95 || waited > 3.0) {
            state.SkipWithError(("the read did not time out after 2 s: " + std::to_string(got) + " bytes, " +
                                 std::to_string(waited) + " s, " + libraryError("error"))
                                    .c_str());
            return;
        }
    }
}
BENCHMARK(BM_ReadTimeoutCpu)
    ->Iterations(1)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

constexpr int32_t kManyPorts = 256;
constexpr size_t kManyBytes = 2048;  // per port and round: more than the default queue holds
constexpr unsigned kManyRounds = 8;

double residentBytes()
{
    std::FILE *statm = std::fopen("/proc/self/statm", "r");
    if (statm == nullptr) return 0;
    unsigned long size = 0;
    unsigned long resident = 0;
    const int fields = std::fscanf(statm, "%lu %lu", &size, &resident);
    std::fclose(statm);
    return fields == 2 ? static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) : 0;
}

// Each port needs its terminal end, the library's wake-up pipe and the
// instrument end: more than the usual soft limit of 1024 descriptors.
bool enoughDescriptors(rlim_t wanted)
{
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return false;
    if (limit.rlim_cur >= wanted) return true;
    limit.rlim_cur = limit.rlim_max == RLIM_INFINITY ? wanted : std::min<rlim_t>(limit.rlim_max, wanted);
    return setrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur >= wanted;
}

// What came back from one port, compared with what was sent: empty when
// every byte is there and right.
std::string checkEcho(int32_t port, unsigned round, const std::vector<unsigned char> &sent, int32_t got,
                      const std::vector<unsigned char> &back)
{
    char text[200];
    if (got < 0 || static_cast<size_t>(got) != sent.size()) {
        std::snprintf(text, sizeof text, "port %d, round %u: %d of %zu bytes came back (%s)", port, round,
                      got, sent.size(), libraryError("last error").c_str());
        return text;
    }
    const auto differ = std::mismatch(sent.begin(), sent.end(), back.begin());
    if (differ.first == sent.end()) return {};
    const auto at = static_cast<size_t>(differ.first - sent.begin());
    std::snprintf(text, sizeof text, "port %d, round %u: byte %zu came back as 0x%02x instead of 0x%02x",
                  port, round, at, *differ.second, *differ.first);
    return text;
}

// 256 ports at once: every port's bytes go out through its writing thread,
// come back from the instrument, and are read and checked; all ports write
// before any is read, so that the writing threads run side by side.
void BM_ManyPortsEcho(benchmark::State &state)
{
    if (!enoughDescriptors(kManyPorts * 6 + 64)) {
        state.SkipWithError("cannot raise the descriptor limit for 256 ports");
        return;
    }
    std::vector<std::unique_ptr<Pty>> pairs;
    std::vector<int> masters;
    for (int32_t i = 0; i < kManyPorts; ++i) {
        pairs.push_back(std::make_unique<Pty>());
        if (!pairs.back()->ok()) {
            state.SkipWithError("not enough pseudo-terminal pairs for 256 ports");
            return;
        }
        masters.push_back(pairs.back()->master());
    }
    {
        // The library's own start-up is no port's cost: one port opened and
        // closed before the count begins (a number the ports below never use).
        Pty pty;
        if (!pty.ok() || !openLibraryPort(state, kWarmUpPort, pty, 0)) return;
        CloseCom(kWarmUpPort);
    }
    Echo echo(masters);
    std::vector<std::vector<unsigned char>> sent;
    for (unsigned round = 0; round < kManyRounds; ++round)
        for (int32_t port = 1; port <= kManyPorts; ++port)
            sent.push_back(pattern(kManyBytes, round * 1000 + static_cast<unsigned>(port)));
    std::vector<unsigned char> back(kManyBytes);
    std::string failure;
    double openedBytes = 0;
    double usedBytes = 0;

    for (auto _ : state) {
        const double before = residentBytes();
        int32_t opened = 0;
        for (; opened < kManyPorts; ++opened)
            if (!openLibraryPort(state, opened + 1, *pairs[static_cast<size_t>(opened)], 0)) break;
        openedBytes = residentBytes() - before;
        echo.start();
        for (unsigned round = 0; round < kManyRounds && opened == kManyPorts && failure.empty(); ++round) {
            const auto message = [&](int32_t port) -> const std::vector<unsigned char> & {
                return sent[round * kManyPorts + static_cast<unsigned>(port - 1)];
            };
            for (int32_t port = 1; port <= kManyPorts && failure.empty(); ++port)
                if (ComWrt(port, message(port).data(), kManyBytes) != static_cast<int32_t>(kManyBytes))
                    failure = "port " + std::to_string(port) + ": " + libraryError("ComWrt");
            for (int32_t port = 1; port <= kManyPorts && failure.empty(); ++port) {
                std::fill(back.begin(), back.end(), 0);
                const int32_t got = ComRd(port, back.data(), kManyBytes);
                failure = checkEcho(port, round, message(port), got, back);
            }
        }
        usedBytes = residentBytes() - before;
        echo.stop();
        if (echo.failed() && failure.empty()) failure = "the instrument side failed";
        for (int32_t port = 1; port <= opened; ++port) CloseCom(port);
        if (opened < kManyPorts) break;  // openLibraryPort has reported it
    }
    if (state.error_occurred()) return;
    if (!failure.empty()) {
        std::fprintf(stderr, "256-PORT ECHO FAILED, BYTES LOST OR CHANGED: %s\n", failure.c_str());
        state.SkipWithError(("bytes lost or changed: " + failure).c_str());
        return;
    }
    state.counters["ports"] = kManyPorts;
    state.counters["bytes_checked"] = static_cast<double>(kManyPorts) * kManyRounds * kManyBytes;
    state.counters["rss_per_port_kib"] = openedBytes / kManyPorts / 1024.0;
    state.counters["rss_per_port_used_kib"] = usedBytes / kManyPorts / 1024.0;
}
BENCHMARK(BM_ManyPortsEcho)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
