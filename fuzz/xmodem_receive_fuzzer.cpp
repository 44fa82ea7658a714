// libFuzzer fuzzer for the XModem receiver (XModemReceive).
//
// The receiver runs on the terminal end of a pseudo-terminal; the fuzzer
// plays the sender on the other end. The sender sends a file of its own in
// whole packets and answers to the receiver's ACK, NAK and C as a sender
// does, but the input decides, transmission by transmission, how it
// misbehaves: damaged, cut, split, repeated, misnumbered or missing packets,
// bytes of the input's own choosing, an early EOT, a line that stays quiet.
//
// The receiver's fixed waits (a second for each piece of a packet, a little
// more for a quiet line after damage) would make every damaged packet cost
// seconds. So the fuzzer stands between the library and the system through
// the POSIX backend's system-call table: whenever the receiver waits for a
// byte and the sender has nothing to send, its wait ends at once as if it had
// run out (one read fails, which the receiver takes as a line that stayed
// quiet). Only a quiet line asked for by the input during a short wait
// (the configured start delay and wait period) is real. Bytes go out only
// while the receiver waits with nothing left to read, and the fuzzer waits
// until the terminal has passed them on, so that a run depends on the input
// alone. The port writes synchronously, so that the receiver's answers are
// on the line, in order, before it waits again.
//
// The table also records the line as the receiver saw it: every byte it read,
// every byte it answered, every wait that ran out, and every byte that had
// arrived and that it threw away unread. What is checked:
//   - no crash, leak or undefined behaviour (the sanitizers);
//   - no wait beyond the quiet spells the input asked for (a hang);
//   - a success (0) only when the record makes a transfer that ends in EOT,
//     and then the file holds exactly the data of the packets that transfer
//     accepted. An independent decoder reads the record: the mode from the
//     receiver's last request before the first packet; noise between packets
//     skipped; a damaged, repeated or misnumbered packet skipped up to the
//     receiver's next answer; and the rest of a packet that is sound so far
//     read on even where the receiver threw it away;
//   - a transfer without misbehaviour succeeds with the padded file;
//   - the progress callback sees each accepted packet once, and a non-zero
//     return ends the transfer with -403.
//
// Input: one byte of settings (bits 0-1 packet size 128/1024/64/133, bits
// 2-3 the sender's packets, bit 4 flushing, bits 5-6 tries - 1, bit 7 the
// progress callback cancels), two bytes of file size (little-endian; with
// both top bits set a file long enough for the packet number to wrap), one
// byte seeding the file's content, one byte for the packet at which the
// callback cancels; the rest picks the misbehaviour of each transmission
// (see Sender::transmit). When the input runs out the sender behaves.
// TOLLAN_FUZZ_TRACE=1 prints the record of each input run.
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <tollan/rs232.h>

#include "platform/posix/system_calls.h"

namespace {

using tollan::platform::posix::SystemCalls;

constexpr int32_t kPort = 61;
constexpr uint8_t kSoh = 0x01;
constexpr uint8_t kStx = 0x02;
constexpr uint8_t kEot = 0x04;
constexpr uint8_t kAck = 0x06;
constexpr uint8_t kNak = 0x15;
constexpr uint8_t kCan = 0x18;
constexpr uint8_t kCrcRequest = 'C';
constexpr uint8_t kPad = 0x1A;

constexpr double kWaitSeconds = 0.05;       // start delay and wait period
constexpr int kShortWaitMs = 200;           // longer waits are the receiver's fixed ones
constexpr int kRealQuietSpells = 2;         // per input
constexpr int64_t kHangSlackMs = 1500;      // beyond the real quiet spells
constexpr size_t kMaxFileSize = 3072;       // 24 packets of 128 bytes
constexpr size_t kMinLongFileSize = 16000;  // 250 to 313 packets of 64 bytes
constexpr size_t kLongFileSizes = 4001;
constexpr int kSenderTries = 6;     // transmissions of one packet
constexpr long kMaxWaits = 100000;  // the receiver's waits per input
constexpr int32_t kPacketSizes[] = {128, 1024, 64, 133};

[[noreturn]] __attribute__((format(printf, 1, 2))) void fail(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::fputs("xmodem_receive_fuzzer: ", stderr);
    std::vfprintf(stderr, format, arguments);
    std::fputc('\n', stderr);
    va_end(arguments);
    std::abort();
}

// ---- the input ------------------------------------------------------------

class Input {
public:
    Input(const uint8_t *data, size_t size) : data_(data), size_(size) {}
    bool empty() const { return position_ >= size_; }
    uint8_t byte() { return empty() ? 0 : data_[position_++]; }
    unsigned twoBytes() { return byte() | static_cast<unsigned>(byte()) << 8; }
    std::vector<uint8_t> bytes(size_t count)
    {
        const size_t taken = std::min(count, size_ - std::min(position_, size_));
        std::vector<uint8_t> out(data_ + position_, data_ + position_ + taken);
        position_ += taken;
        return out;
    }

private:
    const uint8_t *data_;
    size_t size_;
    size_t position_ = 0;
};

struct Settings {
    int32_t packetSize = 128;
    int senderStyle = 0;  // 0 SOH packets, 1 STX packets, 2 STX then an SOH tail, 3 alternating
    bool flushes = false;
    int32_t tries = 2;
    int32_t cancelAt = 0;  // 0: the progress callback never cancels
    size_t fileSize = 0;
    uint8_t seed = 0;

    explicit Settings(Input &input)
    {
        const uint8_t flags = input.byte();
        packetSize = kPacketSizes[flags & 3];
        senderStyle = (flags >> 2) & 3;
        flushes = (flags & 0x10) != 0;
        tries = 1 + ((flags >> 5) & 3);
        // Mostly files of a few packets; with the top two bits, files long
        // enough for the packet number to wrap (in packets of 64 bytes).
        const unsigned sizeBits = input.twoBytes();
        fileSize = (sizeBits & 0xC000) == 0xC000 ? kMinLongFileSize + (sizeBits & 0x3FFF) % kLongFileSizes
                                                 : sizeBits % (kMaxFileSize + 1);
        seed = input.byte();
        const uint8_t cancel = input.byte();
        if ((flags & 0x80) != 0) cancelAt = 1 + cancel % 8;
    }
};

// ---- the check values, apart from the library's own ----------------------

uint16_t crc16(const uint8_t *data, size_t size)
{
    unsigned crc = 0;
    for (size_t i = 0; i < size; ++i) {
        crc ^= static_cast<unsigned>(data[i]) << 8;
        for (int bit = 0; bit < 8; ++bit) crc = (crc & 0x8000) != 0 ? (crc << 1) ^ 0x1021 : crc << 1;
    }
    return static_cast<uint16_t>(crc);
}

uint8_t checksum(const uint8_t *data, size_t size)
{
    unsigned sum = 0;
    for (size_t i = 0; i < size; ++i) sum += data[i];
    return static_cast<uint8_t>(sum);
}

// ---- the line as the receiver saw it ---------------------------------------

struct Event {
    // A byte the receiver read, one it answered, a wait that ran out, a byte
    // that had arrived and that the receiver threw away unread.
    enum Kind : uint8_t { kRead, kAnswer, kQuiet, kDropped } kind;
    uint8_t byte;
};

// What a correct receiver made of the record: whether it ended with EOT, and
// the data of the packets it accepted.
struct Decoded {
    bool ended = false;
    size_t packets = 0;
    std::vector<uint8_t> file;
};

Decoded decode(const std::vector<Event> &record, int32_t packetSize)
{
    enum class At { kHeader, kNumber, kComplement, kData, kCheck } at = At::kHeader;
    Decoded out;
    int lastRequest = -1;
    int crcMode = -1;  // undecided until the first packet
    bool skipping = false;
    uint8_t expected = 1;
    uint8_t number = 0;
    size_t size = 0;
    std::vector<uint8_t> data;
    std::vector<uint8_t> check;
    for (const Event &event : record) {
        if (event.kind == Event::kAnswer) {
            if (crcMode < 0 && (event.byte == kCrcRequest || event.byte == kNak)) lastRequest = event.byte;
            // After a damaged or repeated packet the receiver answers once the line is clear.
            skipping = false;
            continue;
        }
        if (skipping) continue;
        // Throwing bytes away between packets is the receiver's right; the
        // rest of a packet that it is reading, and that is not damaged so
        // far, is not: read on as a correct receiver would.
        if (event.kind == Event::kDropped && at == At::kHeader) continue;
        if (event.kind == Event::kQuiet) {
            // A wait that ran out: nothing at a packet's start, a damaged packet inside one.
            if (at != At::kHeader) {
                skipping = true;
                at = At::kHeader;
            }
            continue;
        }
        const uint8_t byte = event.byte;
        switch (at) {
            case At::kHeader:
                if (byte == kEot) {
                    out.ended = true;
                    return out;
                }
                if (byte == kSoh || byte == kStx) {
                    if (crcMode < 0) crcMode = lastRequest == kNak ? 0 : 1;
                    size = byte == kStx ? 1024 : static_cast<size_t>(packetSize);
                    at = At::kNumber;
                }
                break;  // anything else before a header is noise
            case At::kNumber:
                number = byte;
                at = At::kComplement;
                break;
            case At::kComplement:
                if (static_cast<uint8_t>(number ^ byte) != 0xFF || number != expected) {
                    skipping = true;  // damaged, repeated or out of order
                    at = At::kHeader;
                } else {
                    data.clear();
                    at = At::kData;
                }
                break;
            case At::kData:
                data.push_back(byte);
                if (data.size() == size) {
                    check.clear();
                    at = At::kCheck;
                }
                break;
            case At::kCheck:
                check.push_back(byte);
                if (check.size() == (crcMode != 0 ? 2u : 1u)) {
                    const bool intact = crcMode != 0
                                            ? ((check[0] << 8) | check[1]) == crc16(data.data(), data.size())
                                            : check[0] == checksum(data.data(), data.size());
                    if (intact) {
                        out.file.insert(out.file.end(), data.begin(), data.end());
                        ++out.packets;
                        ++expected;
                    } else {
                        skipping = true;
                    }
                    at = At::kHeader;
                }
                break;
        }
    }
    return out;
}

// ---- the sender -------------------------------------------------------------

// What the sender does while the receiver waits: bytes, or a quiet line.
struct Reply {
    enum Quiet { kNone, kSimulated, kReal } quiet = kSimulated;
    std::vector<uint8_t> bytes;
};

class Sender {
public:
    Sender(const Settings &settings, Input &operations) : operations_(operations)
    {
        uint32_t state = 0x9E3779B9u ^ (settings.seed * 0x01000193u);
        file_.resize(settings.fileSize);
        for (uint8_t &byte : file_) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            byte = static_cast<uint8_t>(state >> 11);
        }
        for (size_t offset = 0; offset < file_.size();) {
            const size_t left = file_.size() - offset;
            bool stx = false;
            switch (settings.senderStyle) {
                case 1:
                    stx = true;
                    break;
                case 2:
                    stx = left >= 1024;
                    break;
                case 3:
                    stx = blocks_.size() % 2 == 1;
                    break;
                default:
                    break;
            }
            const size_t size = stx ? 1024 : static_cast<size_t>(settings.packetSize);
            blocks_.push_back({offset, size, stx ? kStx : kSoh});
            offset += std::min(size, left);
        }
    }

    // The file as a receiver keeps it: whole packets, padded.
    std::vector<uint8_t> padded() const
    {
        std::vector<uint8_t> out;
        for (size_t block = 0; block < blocks_.size(); ++block) {
            const std::vector<uint8_t> data = blockData(block);
            out.insert(out.end(), data.begin(), data.end());
        }
        return out;
    }
    bool misbehaved() const { return misbehaved_; }

    // The receiver waits with nothing to read; `record` holds its answers so far.
    Reply onWait(const std::vector<Event> &record)
    {
        if (!rest_.empty()) return {Reply::kNone, std::exchange(rest_, {})};
        int answer = -1;
        for (; seen_ < record.size(); ++seen_) {
            const Event &event = record[seen_];
            if (event.kind == Event::kAnswer &&
                (event.byte == kAck || event.byte == kNak || event.byte == kCan || event.byte == kCrcRequest))
                answer = event.byte;
            if (event.kind == Event::kRead && (event.byte == kSoh || event.byte == kStx)) modeChosen_ = true;
        }
        if (answer < 0 || state_ == State::kDone) return {};
        if (answer == kCan) {
            state_ = State::kDone;
            return {};
        }
        if (state_ == State::kStart) {
            if (answer == kAck) return {};
            state_ = State::kSending;
        } else if (answer == kAck) {
            if (item_ == blocks_.size()) {
                state_ = State::kDone;
                return {};
            }
            ++item_;
            tries_ = 0;
        } else if (++tries_ >= kSenderTries) {
            state_ = State::kDone;
            return {};
        }
        // Until a packet's header reaches the receiver, its requests choose the mode.
        if (!modeChosen_ && (answer == kCrcRequest || answer == kNak)) crc_ = answer == kCrcRequest;
        return transmit();
    }

private:
    enum class State { kStart, kSending, kDone };
    struct Block {
        size_t offset;
        size_t size;
        uint8_t header;
    };

    std::vector<uint8_t> blockData(size_t block) const
    {
        const Block &b = blocks_[block];
        std::vector<uint8_t> data(b.size, kPad);
        const size_t count = std::min(b.size, file_.size() - b.offset);
        std::copy_n(file_.begin() + static_cast<std::ptrdiff_t>(b.offset), count, data.begin());
        return data;
    }

    std::vector<uint8_t> packet(size_t block, uint8_t number) const
    {
        const std::vector<uint8_t> data = blockData(block);
        std::vector<uint8_t> out{blocks_[block].header, number, static_cast<uint8_t>(~number)};
        out.insert(out.end(), data.begin(), data.end());
        if (crc_) {
            const uint16_t crc = crc16(data.data(), data.size());
            out.push_back(static_cast<uint8_t>(crc >> 8));
            out.push_back(static_cast<uint8_t>(crc));
        } else {
            out.push_back(checksum(data.data(), data.size()));
        }
        return out;
    }

    // The transmission of item `item` (the packets, then EOT).
    std::vector<uint8_t> transmission(size_t item) const
    {
        if (item < blocks_.size()) return packet(item, static_cast<uint8_t>(item + 1));
        return {kEot};
    }

    // The current item, as the next operation of the input sends it.
    Reply transmit()
    {
        std::vector<uint8_t> out = transmission(item_);
        if (operations_.empty()) return {Reply::kNone, out};
        const uint8_t operation = operations_.byte();
        const bool isPacket = item_ < blocks_.size();
        switch (operation % 16) {
            case 4:  // this transmission and the next one at once
                if (item_ + 1 <= blocks_.size()) {
                    const std::vector<uint8_t> next = transmission(item_ + 1);
                    out.insert(out.end(), next.begin(), next.end());
                }
                break;
            case 5: {  // one byte damaged
                const uint8_t mask = operations_.byte();
                out[operations_.twoBytes() % out.size()] ^= mask != 0 ? mask : 0xFF;
                break;
            }
            case 6:  // cut short (perhaps to nothing)
                out.resize(operations_.twoBytes() % out.size());
                break;
            case 7: {  // noise before
                const std::vector<uint8_t> noise = operations_.bytes(operations_.byte() % 48);
                out.insert(out.begin(), noise.begin(), noise.end());
                break;
            }
            case 8: {  // noise after
                const std::vector<uint8_t> noise = operations_.bytes(operations_.byte() % 48);
                out.insert(out.end(), noise.begin(), noise.end());
                break;
            }
            case 9:  // the previous packet again, in place of this one
                if (item_ > 0) out = packet(item_ - 1, static_cast<uint8_t>(item_));
                break;
            case 10:  // EOT in place of this transmission
                out = {kEot};
                break;
            case 11:  // nothing: the line stays quiet
                misbehaved_ = true;
                return {(operations_.byte() & 1) != 0 ? Reply::kReal : Reply::kSimulated, {}};
            case 12: {  // in two parts, the second at the receiver's next wait
                const size_t cut = 1 + operations_.twoBytes() % out.size();
                rest_.assign(out.begin() + static_cast<std::ptrdiff_t>(cut), out.end());
                out.resize(cut);
                break;
            }
            case 13:  // another packet number, its complement to match
                if (isPacket) {
                    const uint8_t shift = operations_.byte();
                    out[1] = static_cast<uint8_t>(out[1] + (shift != 0 ? shift : 1));
                    out[2] = static_cast<uint8_t>(~out[1]);
                }
                break;
            case 14:  // a complement that does not match
                if (isPacket) {
                    const uint8_t mask = operations_.byte();
                    out[2] ^= mask != 0 ? mask : 0xFF;
                }
                break;
            case 15:  // bytes of the input's choosing in place of this transmission
                out = operations_.bytes(operations_.byte() % 64);
                break;
            default:  // 0 to 3: as it should be
                return {Reply::kNone, out};
        }
        misbehaved_ = true;
        if (out.empty()) return {};
        return {Reply::kNone, out};
    }

    Input &operations_;
    std::vector<uint8_t> file_;
    std::vector<Block> blocks_;
    State state_ = State::kStart;
    size_t item_ = 0;
    int tries_ = 0;
    bool crc_ = true;
    bool modeChosen_ = false;
    bool misbehaved_ = false;
    size_t seen_ = 0;
    std::vector<uint8_t> rest_;
};

// ---- the line -----------------------------------------------------------------

// One pseudo-terminal for the process; the port stays open on its terminal end.
struct Line {
    int sender = -1;                // the pseudo-terminal's other end
    std::atomic<int> terminal{-1};  // the terminal end as the library opened it
    std::string folder;
    std::string fileName;

    // What the system-call table looks at during a transfer.
    std::atomic<bool> active{false};
    Sender *peer = nullptr;
    std::vector<Event> record;
    size_t answers = 0;              // answer bytes in the record
    std::vector<uint8_t> delivered;  // every byte sent to the receiver
    size_t taken = 0;                // of which it read or threw away so many
    bool failNextRead = false;
    bool realQuiet = false;  // a real quiet spell lasts until the receiver answers
    size_t answersAtQuiet = 0;
    int realQuietsLeft = 0;
    int64_t realQuietMs = 0;
    long waits = 0;
};

Line line;
const SystemCalls *realCalls = nullptr;

// Drops what the receiver sent; the record has it already.
void drainSender()
{
    uint8_t sink[512];
    while (::read(line.sender, sink, sizeof sink) > 0) {
    }
}

int waiting()
{
    int count = 0;
    if (::ioctl(line.terminal.load(), FIONREAD, &count) != 0) fail("FIONREAD: %s", std::strerror(errno));
    return count;
}

// Sends bytes from the sender's end and waits until the terminal end has them all.
void deliver(const std::vector<uint8_t> &bytes)
{
    const int expected = waiting() + static_cast<int>(bytes.size());
    line.delivered.insert(line.delivered.end(), bytes.begin(), bytes.end());
    size_t sent = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (sent < bytes.size()) {
        const ssize_t n = ::write(line.sender, bytes.data() + sent, bytes.size() - sent);
        if (n > 0) {
            sent += static_cast<size_t>(n);
        } else if (n < 0 && errno != EAGAIN && errno != EINTR) {
            fail("writing to the pseudo-terminal: %s", std::strerror(errno));
        } else if (std::chrono::steady_clock::now() > deadline) {
            fail("the pseudo-terminal takes no more bytes");
        } else {
            std::this_thread::yield();
        }
    }
    for (int spins = 0; waiting() < expected; ++spins) {
        if (std::chrono::steady_clock::now() > deadline)
            fail("the pseudo-terminal passed %d of %d bytes on", waiting(), expected);
        if (spins < 100)
            std::this_thread::yield();
        else
            std::this_thread::sleep_for(std::chrono::microseconds(20));
    }
}

bool isTerminal(int fd)
{
    return line.active.load(std::memory_order_acquire) && fd == line.terminal.load();
}

ssize_t fuzzRead(int fd, void *buffer, size_t count)
{
    if (!isTerminal(fd)) return realCalls->read(fd, buffer, count);
    if (line.failNextRead) {
        line.failNextRead = false;
        line.record.push_back({Event::kQuiet, 0});
        errno = EIO;
        return -1;
    }
    const ssize_t got = realCalls->read(fd, buffer, count);
    for (ssize_t i = 0; i < got; ++i) {
        const uint8_t byte = static_cast<uint8_t *>(buffer)[i];
        if (line.taken >= line.delivered.size() || line.delivered[line.taken] != byte)
            fail("the receiver read byte %zu as 0x%02X, not as sent", line.taken, byte);
        ++line.taken;
        line.record.push_back({Event::kRead, byte});
    }
    return got;
}

// The library writes to the line through a descriptor of its own: any
// descriptor of the terminal's device.
bool writesToTerminal(int fd)
{
    if (isTerminal(fd)) return true;
    if (!line.active.load(std::memory_order_acquire)) return false;
    struct stat written {
    }, terminal{};
    return ::fstat(fd, &written) == 0 && ::fstat(line.terminal.load(), &terminal) == 0 &&
           S_ISCHR(written.st_mode) && written.st_rdev == terminal.st_rdev;
}

ssize_t fuzzWrite(int fd, const void *buffer, size_t count)
{
    const ssize_t written = realCalls->write(fd, buffer, count);
    if (writesToTerminal(fd))
        for (ssize_t i = 0; i < written; ++i) {
            line.record.push_back({Event::kAnswer, static_cast<const uint8_t *>(buffer)[i]});
            ++line.answers;
        }
    return written;
}

// The receiver waits for a byte. A wait that begins while bytes are still
// waiting ends at once, as it would on a line; only a wait with nothing left
// to read is the peer's turn.
int receiverWaits(pollfd *fds, nfds_t count, int timeoutMs)
{
    drainSender();
    if (waiting() > 0) return realCalls->poll(fds, count, timeoutMs);
    if (++line.waits > kMaxWaits) fail("the receiver waited %ld times for one input", line.waits);
    if (line.realQuiet && line.answers == line.answersAtQuiet && timeoutMs <= kShortWaitMs) {
        line.realQuietMs += timeoutMs;
        const int ready = realCalls->poll(fds, count, timeoutMs);
        if (ready == 0) line.record.push_back({Event::kQuiet, 0});
        return ready;
    }
    line.realQuiet = false;
    const Reply reply = line.peer->onWait(line.record);
    if (!reply.bytes.empty()) {
        deliver(reply.bytes);
        return realCalls->poll(fds, count, timeoutMs);
    }
    if (reply.quiet == Reply::kReal && line.realQuietsLeft > 0 && timeoutMs <= kShortWaitMs) {
        --line.realQuietsLeft;
        line.realQuiet = true;
        line.answersAtQuiet = line.answers;
        line.realQuietMs += timeoutMs;
        const int ready = realCalls->poll(fds, count, timeoutMs);
        if (ready == 0) line.record.push_back({Event::kQuiet, 0});
        return ready;
    }
    // The wait ends at once, as if it had run out.
    line.failNextRead = true;
    for (nfds_t i = 0; i < count; ++i) fds[i].revents = 0;
    fds[0].revents = POLLIN;
    return 1;
}

int fuzzTcflush(int fd, int queue)
{
    if (isTerminal(fd) && (queue == TCIFLUSH || queue == TCIOFLUSH)) {
        const int left = waiting();
        if (static_cast<size_t>(left) != line.delivered.size() - line.taken)
            fail("%d bytes wait to be read where %zu were sent and not read", left,
                 line.delivered.size() - line.taken);
        for (; line.taken < line.delivered.size(); ++line.taken)
            line.record.push_back({Event::kDropped, line.delivered[line.taken]});
    }
    return realCalls->tcflush(fd, queue);
}

int fuzzPoll(pollfd *fds, nfds_t count, int timeoutMs)
{
    if (count >= 1 && (fds[0].events & POLLIN) != 0 && isTerminal(fds[0].fd))
        return receiverWaits(fds, count, timeoutMs);
    return realCalls->poll(fds, count, timeoutMs);
}

SystemCalls fuzzCalls;

// The progress callback's view.
struct Progress {
    int32_t calls = 0;
    int32_t cancelAt = 0;
    int64_t lastBytes = 0;
    bool outOfStep = false;
};
Progress progress;

int32_t onProgress(int32_t, int32_t packets, int64_t bytes, int32_t, void *data)
{
    auto *seen = static_cast<Progress *>(data);
    ++seen->calls;
    if (packets != seen->calls || bytes <= seen->lastBytes) seen->outOfStep = true;
    seen->lastBytes = bytes;
    return seen->cancelAt != 0 && seen->calls == seen->cancelAt ? 1 : 0;
}

void closeLine()
{
    CloseCom(kPort);
    std::error_code ignored;
    if (!line.folder.empty()) std::filesystem::remove_all(line.folder, ignored);
}

void openLine()
{
    std::string folder = (std::filesystem::temp_directory_path() / "tollan-xmodem-fuzz-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) fail("mkdtemp: %s", std::strerror(errno));
    line.folder = folder;
    line.fileName = folder + "/received";
    std::atexit(closeLine);
    // Never the user's own settings.
    setenv("TOLLAN_REGISTRY", (folder + "/registry.reg").c_str(), 0);

    char name[128] = {};
    int terminal = -1;
    if (openpty(&line.sender, &terminal, name, nullptr, nullptr) != 0)
        fail("openpty: %s", std::strerror(errno));
    fcntl(line.sender, F_SETFL, fcntl(line.sender, F_GETFL) | O_NONBLOCK);
    // Synchronous writes: each answer is on the line before the receiver reads again.
    if (const int32_t opened = OpenComConfig(kPort, name, 115200, 0, 8, 1, 4096, -1))
        fail("OpenComConfig(%s): %d", name, opened);
    close(terminal);  // the library has its own
    intptr_t handle = -1;
    if (GetSystemComHandle(kPort, &handle) != 0 || handle < 0) fail("GetSystemComHandle");
    line.terminal = static_cast<int>(handle);
    if (XModemSetProgressCallback(kPort, onProgress, &progress) != 0) fail("XModemSetProgressCallback");

    realCalls = &tollan::platform::posix::realSystemCalls();
    fuzzCalls = *realCalls;
    fuzzCalls.read = fuzzRead;
    fuzzCalls.write = fuzzWrite;
    fuzzCalls.poll = fuzzPoll;
    fuzzCalls.tcflush = fuzzTcflush;
    tollan::platform::posix::replaceSystemCalls(&fuzzCalls);
}

std::vector<uint8_t> readFile(const std::string &name)
{
    std::ifstream in(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

size_t firstDifference(const std::vector<uint8_t> &a, const std::vector<uint8_t> &b)
{
    return static_cast<size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
}

// With TOLLAN_FUZZ_TRACE set: the line as the receiver saw it, for a look at one input.
void trace(int32_t result, const Settings &settings)
{
    std::fprintf(stderr, "packet size %d, tries %d, flushes %d, file %zu bytes, cancel at %d: result %d\n",
                 settings.packetSize, settings.tries, settings.flushes ? 1 : 0, settings.fileSize,
                 settings.cancelAt, result);
    size_t run = 0;
    for (const Event &event : line.record) {
        if (event.kind == Event::kRead) {
            ++run;
            continue;
        }
        if (run > 0) std::fprintf(stderr, "  read %zu bytes\n", run);
        run = 0;
        if (event.kind == Event::kQuiet)
            std::fprintf(stderr, "  quiet\n");
        else if (event.kind == Event::kDropped)
            std::fprintf(stderr, "  dropped 0x%02X\n", event.byte);
        else
            std::fprintf(stderr, "  answer 0x%02X\n", event.byte);
    }
    if (run > 0) std::fprintf(stderr, "  read %zu bytes\n", run);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    openLine();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Input input(data, size);
    const Settings settings(input);
    Sender sender(settings, input);

    if (const int32_t configured =
            XModemConfig(kPort, kWaitSeconds, settings.tries, kWaitSeconds, settings.packetSize))
        fail("XModemConfig: %d", configured);
    __SetXModemFlushesQs(settings.flushes ? 1 : 0);
    progress = Progress{};
    progress.cancelAt = settings.cancelAt;

    line.peer = &sender;
    line.record.clear();
    line.answers = 0;
    line.delivered.clear();
    line.taken = 0;
    line.failNextRead = false;
    line.realQuiet = false;
    line.realQuietsLeft = kRealQuietSpells;
    line.realQuietMs = 0;
    line.waits = 0;

    const auto start = std::chrono::steady_clock::now();
    line.active.store(true, std::memory_order_release);
    const int32_t result = XModemReceive(kPort, line.fileName.c_str());
    line.active.store(false, std::memory_order_release);
    const auto tookMs =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
            .count();
    line.peer = nullptr;
    FlushInQ(kPort);
    drainSender();

    static const bool tracing = std::getenv("TOLLAN_FUZZ_TRACE") != nullptr;
    if (tracing) trace(result, settings);
    if (tookMs > line.realQuietMs + kHangSlackMs)
        fail("the receiver took %lld ms with %lld ms of quiet line asked for (result %d)",
             static_cast<long long>(tookMs), static_cast<long long>(line.realQuietMs), result);
    if (result > 0) fail("XModemReceive returned %d", result);
    if (progress.outOfStep) fail("the progress callback counted out of step");

    const bool cancelAsked = settings.cancelAt != 0 && progress.calls >= settings.cancelAt;
    if (cancelAsked && (result != ZOR_XMODEM_CANCELLED_BY_CALLER || progress.calls != settings.cancelAt))
        fail("the progress callback cancelled at packet %d; the transfer returned %d after %d calls",
             settings.cancelAt, result, progress.calls);
    if (result == ZOR_XMODEM_CANCELLED_BY_CALLER && !cancelAsked)
        fail("-403 without the progress callback cancelling (%d calls)", progress.calls);

    if (!sender.misbehaved()) {
        const int32_t wanted = cancelAsked ? ZOR_XMODEM_CANCELLED_BY_CALLER : 0;
        if (result != wanted)
            fail("a clean transfer of %zu bytes returned %d, not %d", settings.fileSize, result, wanted);
    }
    if (result != 0) return 0;

    const Decoded decoded = decode(line.record, settings.packetSize);
    if (!decoded.ended) fail("success, but the receiver read no EOT where a packet could start");
    const std::vector<uint8_t> file = readFile(line.fileName);
    if (file != decoded.file)
        fail(
            "success with a file of %zu bytes where the line carried %zu bytes in %zu packets "
            "(first difference at byte %zu)",
            file.size(), decoded.file.size(), decoded.packets, firstDifference(file, decoded.file));
    if (!sender.misbehaved() && file != sender.padded())
        fail("a clean transfer gave %zu bytes, not the %zu sent", file.size(), sender.padded().size());
    if (static_cast<size_t>(progress.calls) != decoded.packets ||
        (progress.calls > 0 && static_cast<size_t>(progress.lastBytes) != file.size()))
        fail("the progress callback saw %d packets and %lld bytes of %zu packets and %zu bytes",
             progress.calls, static_cast<long long>(progress.lastBytes), decoded.packets, file.size());
    return 0;
}
