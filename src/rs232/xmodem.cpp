// XModem file transfers over an open port: checksum or CRC mode, packets of
// the configured size (STX headers for 1024 bytes, SOH otherwise).
#include <tollan/fmtio.h>
#include <tollan/rs232.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "platform/thread.h"
#include "rs232/port_table.h"
#include "rs232/settings.h"
#include "rs232/transfer.h"
#include "rs232/xmodem_check.h"
#include "timing/milliseconds.h"

namespace tollan::rs232 {
namespace {

constexpr unsigned char kSoh = 0x01;
constexpr unsigned char kStx = 0x02;
constexpr unsigned char kEot = 0x04;
constexpr unsigned char kAck = 0x06;
constexpr unsigned char kNak = 0x15;
constexpr unsigned char kCan = 0x18;
constexpr unsigned char kCrcRequest = 'C';

constexpr int32_t kLongPacket = 1024;
constexpr uint32_t kPieceTimeoutMs = 1000;  // each piece of a packet, each control byte
constexpr uint32_t kDrainQuietMs = 1100;
constexpr uint32_t kLastByteMs = 1000;  // how long a transfer's last byte may take to leave
constexpr int kNoByte = -1;
constexpr int kLineFailed = -2;

std::atomic<int32_t> flushesQueues{1};

uint32_t periodMs(double seconds) noexcept
{
    return static_cast<uint32_t>(seconds * 1000.0);
}

// One transfer on a port whose lock the caller holds. The reads and writes
// are the exported calls, each under a port time-out of its own that is put
// back afterwards.
class Transfer {
public:
    Transfer(int32_t number, ComPort &port) noexcept : number_(number), port_(port) {}

    // The line as XModem needs it: 8-N-1 without XON/XOFF. 0 or -5.
    int32_t switchLine() noexcept
    {
        saved_ = {port_.parity, port_.dataBits, port_.stopBits, port_.xonXoffMode};
        switched_ = true;
        port_.parity = 0;
        port_.dataBits = 8;
        port_.stopBits = 1;
        port_.xonXoffMode = false;
        return ApplyPortSettings(port_);
    }

    // The line settings back, once the last byte has left (bounded), so that
    // a close right after the transfer does not cut the peer off.
    ~Transfer()
    {
        letLastByteLeave();
        if (!switched_ || !port_.open) return;
        port_.parity = saved_.parity;
        port_.dataBits = saved_.dataBits;
        port_.stopBits = saved_.stopBits;
        port_.xonXoffMode = saved_.xonXoff;
        ApplyPortSettings(port_);
    }
    Transfer(const Transfer &) = delete;
    Transfer &operator=(const Transfer &) = delete;

    void flushBoth() noexcept
    {
        if (flushesQueues.load() == 0) return;
        FlushOutQ(number_);
        FlushInQ(number_);
    }

    // Reads one byte, which the peer is yet to send, within `ms` (0: no
    // limit); kNoByte when none came, kLineFailed when the line reported an
    // error.
    int readByte(uint32_t ms) noexcept
    {
        const TimeoutFor timeout(port_, ms);
        unsigned char byte = 0;
        uint32_t got = 0;
        const int32_t result = comRdAtLeast(number_, &byte, 1, 1, &got, FirstPass::wait);
        return result == 1 ? byte : (result < 0 ? kLineFailed : kNoByte);
    }

    // Reads at least `enough` and at most `count` bytes, each within `ms`
    // of the one before; *got: how many came.
    void readAtLeast(unsigned char *bytes, uint32_t enough, uint32_t count, uint32_t ms,
                     uint32_t *got) noexcept
    {
        const TimeoutFor timeout(port_, ms);
        comRdAtLeast(number_, bytes, enough, count, got);
    }

    // Waits up to `ms` (0: no limit) for a byte that `wanted` accepts,
    // ignoring all others; kNoByte when the time passed or the line failed.
    template <class Wanted>
    int awaitByte(uint32_t ms, Wanted wanted) noexcept
    {
        const uint32_t start = timing::millisecondClock();
        for (;;) {
            uint32_t left = 0;
            if (ms != 0) {
                const uint32_t elapsed = timing::millisecondsSince(start);
                if (elapsed >= ms) return kNoByte;
                left = std::max(ms - elapsed, 1u);
            }
            const int byte = readByte(left);
            if (byte == kLineFailed) return kNoByte;
            if (byte != kNoByte && wanted(static_cast<unsigned char>(byte))) return byte;
        }
    }

    // True when all `count` bytes went out.
    bool write(const unsigned char *bytes, uint32_t count) noexcept
    {
        const TimeoutFor timeout(port_, kPieceTimeoutMs);
        return ComWrt(number_, bytes, count) == static_cast<int32_t>(count);
    }
    bool sendControl(unsigned char byte) noexcept { return write(&byte, 1); }

    // Clears the line after a damaged packet: drops input until it has been
    // quiet for a little over a second.
    void drainInput() noexcept
    {
        FlushInQ(number_);
        const TimeoutFor timeout(port_, kDrainQuietMs);
        unsigned char byte = 0;
        while (ComRd(number_, &byte, 1) == 1) FlushInQ(number_);
    }

    ComPort &port() noexcept { return port_; }

    void repeated() noexcept { ++retries_; }
    // A data packet went through (sent: acknowledged; received: written,
    // its ACK still to go); false when the caller's progress callback asks
    // to stop.
    bool packetDone(uint32_t bytes) noexcept
    {
        ++packets_;
        bytes_ += bytes;
        return port_.xmodemProgress == nullptr ||
               port_.xmodemProgress(number_, packets_, bytes_, retries_, port_.xmodemProgressData) == 0;
    }
    // Cancels at a packet boundary on the caller's request, with two CANs:
    // many peers take a single CAN for line noise.
    int32_t cancelForCaller() noexcept
    {
        const unsigned char cancel[] = {kCan, kCan};
        write(cancel, sizeof cancel);
        return ZOR_XMODEM_CANCELLED_BY_CALLER;
    }

private:
    struct Saved {
        uint8_t parity;
        uint8_t dataBits;
        uint8_t stopBits;
        bool xonXoff;
    };

    // The port's time-out for the life of one read or write.
    class TimeoutFor {
    public:
        TimeoutFor(ComPort &port, uint32_t ms) noexcept : port_(port), saved_(port.timeoutMs)
        {
            port_.timeoutMs = static_cast<int32_t>(std::min<uint32_t>(ms, INT32_MAX));
        }
        ~TimeoutFor() { port_.timeoutMs = saved_; }
        TimeoutFor(const TimeoutFor &) = delete;
        TimeoutFor &operator=(const TimeoutFor &) = delete;

    private:
        ComPort &port_;
        int32_t saved_;
    };

    void letLastByteLeave() noexcept
    {
        WriteThread &writer = port_.writeThread;
        if (!port_.open || writer.synchronous || writer.device == nullptr) return;
        const uint32_t start = timing::millisecondClock();
        for (;;) {
            uint32_t waiting = 0;
            {
                std::lock_guard hold(writer.lock);
                waiting = writer.bytesInQ;
            }
            if (waiting == 0 || timing::millisecondsSince(start) >= kLastByteMs) return;
            if (writer.room != nullptr) writer.room->wait(10);
        }
    }

    int32_t number_;
    ComPort &port_;
    Saved saved_{};
    bool switched_ = false;
    int32_t packets_ = 0;
    int64_t bytes_ = 0;
    int32_t retries_ = 0;
};

// A file of the formatting library, closed with the transfer.
class XFile {
public:
    XFile(const char *name, int32_t access, int32_t action) noexcept
        : handle_(ZOR_OpenFile(name, access, action, 0))
    {
    }
    ~XFile()
    {
        if (handle_ >= 0) ZOR_CloseFile(handle_);
    }
    XFile(const XFile &) = delete;
    XFile &operator=(const XFile &) = delete;
    bool opened() const noexcept { return handle_ >= 0; }
    int32_t handle() const noexcept { return handle_; }

private:
    int32_t handle_;
};

// ---- sending --------------------------------------------------------------

// Waits for the receiver's NAK (checksum mode) or C (CRC mode).
int32_t XModemStartSndConnection(Transfer &transfer, bool *crcMode) noexcept
{
    transfer.flushBoth();
    const ComPort &port = transfer.port();
    for (int32_t tries = 0; tries < port.xmodemMaxTries; ++tries) {
        const int byte = transfer.awaitByte(periodMs(port.xmodemStartDelay), [](unsigned char b) {
            return b == kNak || b == kCrcRequest || b == kCan;
        });
        if (byte == kCan) return ZOR_XMODEM_CANCELLED;
        if (byte != kNoByte) {
            *crcMode = byte == kCrcRequest;
            return 0;
        }
    }
    return ZOR_XMODEM_NO_INITIAL_NAK;
}

constexpr uint32_t kHeadSize = 3;
constexpr uint32_t kLongestCheck = 2;

// Sends one packet (or EOT) until it is acknowledged; a packet never
// acknowledged is cancelled with CAN. `packet` holds the data after room for
// the head, and room for the check after it: the packet goes out in one
// write, so that it reaches the line in one piece.
int32_t XModemSendPacket(Transfer &transfer, unsigned char *packet, unsigned char number, bool crcMode,
                         bool end) noexcept
{
    const ComPort &port = transfer.port();
    const auto size = static_cast<uint32_t>(port.xmodemPacketSize);
    unsigned char *data = packet + kHeadSize;
    packet[0] = port.xmodemPacketSize == kLongPacket ? kStx : kSoh;
    packet[1] = number;
    packet[2] = static_cast<unsigned char>(~number);
    uint32_t checkSize = 1;
    if (!end) {
        if (crcMode) {
            const uint16_t crc = crc16Xmodem(data, size);
            data[size] = static_cast<unsigned char>(crc >> 8);
            data[size + 1] = static_cast<unsigned char>(crc);
            checkSize = 2;
        } else {
            data[size] = checksum8(data, size);
        }
    }
    for (int32_t tries = 0; tries < port.xmodemMaxTries; ++tries) {
        if (tries > 0) transfer.repeated();
        transfer.flushBoth();
        if (end) {
            transfer.sendControl(kEot);
        } else {
            transfer.write(packet, kHeadSize + size + checkSize);
        }
        const int answer = transfer.awaitByte(periodMs(port.xmodemWaitPeriod), [](unsigned char b) {
            return b == kAck || b == kNak || b == kCan;
        });
        if (answer == kAck) return 0;
        if (answer == kCan) return ZOR_XMODEM_CANCELLED;
    }
    if (end) return ZOR_XMODEM_NO_EOT_ACK;
    transfer.sendControl(kCan);
    return ZOR_XMODEM_NO_ACK;
}

int32_t sendFile(Transfer &transfer, const char *fileName) noexcept
{
    if (const int32_t switched = transfer.switchLine()) return switched;
    const XFile file(fileName, 1, 2);  // read only, binary
    if (!file.opened()) return ZOR_XMODEM_FILE_OPEN;
    const auto size = static_cast<uint32_t>(transfer.port().xmodemPacketSize);
    std::unique_ptr<unsigned char[]> packet(
        new (std::nothrow) unsigned char[kHeadSize + size + kLongestCheck]);
    if (packet == nullptr) return ZOR_RS232_NO_MEMORY;
    unsigned char *data = packet.get() + kHeadSize;
    bool crcMode = false;
    if (const int32_t started = XModemStartSndConnection(transfer, &crcMode)) return started;
    for (unsigned char number = 1;; ++number) {
        std::memset(data, 0, size);
        const int32_t got = ZOR_ReadFile(file.handle(), data, size);
        if (got < 0) return ZOR_RS232_FILE_READ_ERROR;
        if (got == 0) return XModemSendPacket(transfer, packet.get(), number, crcMode, true);
        if (const int32_t sent = XModemSendPacket(transfer, packet.get(), number, crcMode, false))
            return sent;
        if (!transfer.packetDone(size)) return transfer.cancelForCaller();
    }
}

// ---- receiving ------------------------------------------------------------

// Asks for CRC mode in the first half of the tries, for checksum mode after.
// The header that answers is left for the packet reader.
int32_t XModemStartRcvConnection(Transfer &transfer, bool *crcMode) noexcept
{
    transfer.flushBoth();
    ComPort &port = transfer.port();
    for (int32_t tries = 0; tries < port.xmodemMaxTries; ++tries) {
        const bool askCrc = tries < (port.xmodemMaxTries + 1) / 2;
        transfer.sendControl(askCrc ? kCrcRequest : kNak);
        const int byte = transfer.awaitByte(periodMs(port.xmodemStartDelay), [](unsigned char b) {
            return b == kSoh || b == kStx || b == kEot || b == kCan;
        });
        if (byte == kCan) return ZOR_XMODEM_CANCELLED;
        if (byte != kNoByte) {
            port.bytePushedBack = true;
            port.pushedBackByte = static_cast<unsigned char>(byte);
            *crcMode = askCrc;
            return 0;
        }
    }
    return ZOR_XMODEM_RECEIVE_RETRIES;
}

constexpr uint32_t kNumberSize = 2;  // the packet number and its complement

// What follows a packet's header (number, complement, data, check) as it
// comes in. Each piece is waited for with its own time-out, as if read
// alone, but every read takes all of the packet that has arrived, so that a
// packet on the line costs one read.
class PacketBody {
public:
    PacketBody(Transfer &transfer, unsigned char *bytes, uint32_t size) noexcept
        : transfer_(transfer), bytes_(bytes), size_(size)
    {
    }
    // True once the first `end` bytes are in (false: the piece they end did
    // not come within its time-out, or the line failed).
    bool through(uint32_t end) noexcept
    {
        if (have_ < end) {
            uint32_t got = 0;
            transfer_.readAtLeast(bytes_ + have_, end - have_, size_ - have_, kPieceTimeoutMs, &got);
            have_ += got;
        }
        return have_ >= end;
    }

private:
    Transfer &transfer_;
    unsigned char *bytes_;
    uint32_t size_;
    uint32_t have_ = 0;
};

// Receives the packet numbered `expected` into the file, or the end.
// `packet` has room for the longest body. 0 or an error.
int32_t XModemComtoFileDdataPacket(Transfer &transfer, const XFile &file, bool crcMode,
                                   unsigned char expected, unsigned char *packet, bool *end) noexcept
{
    const ComPort &port = transfer.port();
    int32_t lastError = 0;
    for (int32_t tries = 0; tries < port.xmodemMaxTries; ++tries) {
        const int header = transfer.awaitByte(periodMs(port.xmodemWaitPeriod), [&](unsigned char b) {
            if (b == kSoh || b == kStx || b == kEot || b == kCan) return true;
            lastError = ZOR_XMODEM_NO_HEADER;
            return false;
        });
        if (header == kEot) {
            transfer.sendControl(kAck);
            *end = true;
            return 0;
        }
        if (header == kCan) return ZOR_XMODEM_CANCELLED;
        if (header == kNoByte) {
            lastError = ZOR_XMODEM_NO_HEADER;
            transfer.flushBoth();
            transfer.sendControl(kNak);
            transfer.repeated();
            continue;
        }
        const auto size = static_cast<uint32_t>(header == kStx ? kLongPacket : port.xmodemPacketSize);
        const uint32_t checkSize = crcMode ? 2 : 1;
        PacketBody body(transfer, packet, kNumberSize + size + checkSize);
        // Read once `body` has them.
        const unsigned char &number = packet[0];
        const unsigned char &complement = packet[1];
        const unsigned char *data = packet + kNumberSize;
        const unsigned char *check = data + size;
        bool damaged = true;
        if (!body.through(1) || !body.through(kNumberSize)) {
            lastError = ZOR_XMODEM_NO_PACKET_NUMBER;
        } else if ((number | complement) != 0xFF || (number & complement) != 0) {
            lastError = ZOR_XMODEM_PACKET_NUMBER;
        } else if (number == expected) {
            if (!body.through(kNumberSize + size)) {
                lastError = ZOR_XMODEM_NO_PACKET_DATA;
            } else {
                damaged = false;
                if (!body.through(kNumberSize + size + checkSize)) {
                    lastError = ZOR_XMODEM_NO_CHECK;
                } else if (crcMode ? ((check[0] << 8) | check[1]) != crc16Xmodem(data, size)
                                   : check[0] != checksum8(data, size)) {
                    lastError = ZOR_XMODEM_CHECK;
                } else {
                    if (ZOR_WriteFile(file.handle(), data, size) != static_cast<int32_t>(size))
                        return ZOR_RS232_FILE_WRITE_ERROR;
                    transfer.flushBoth();
                    // A cancel takes the place of the ACK, so that the
                    // sender, waiting for its answer, hears it.
                    if (!transfer.packetDone(size)) return transfer.cancelForCaller();
                    transfer.sendControl(kAck);
                    return 0;
                }
            }
        } else if (number == static_cast<unsigned char>(expected - 1)) {
            // The previous packet again: its ACK was lost. Acknowledged, not written twice.
            transfer.drainInput();
            transfer.flushBoth();
            transfer.sendControl(kAck);
            transfer.repeated();
            continue;
        } else {
            transfer.drainInput();
            transfer.flushBoth();
            transfer.sendControl(kCan);
            return ZOR_XMODEM_PACKET_NUMBER;
        }
        if (damaged) transfer.drainInput();
        transfer.flushBoth();
        transfer.sendControl(kNak);
        transfer.repeated();
    }
    // Tries spent only on repeats of the previous packet received nothing:
    // reporting success would shift every later packet number by one and
    // leave the file short.
    return lastError != 0 ? lastError : ZOR_XMODEM_RECEIVE_RETRIES;
}

int32_t receiveFile(Transfer &transfer, const char *fileName) noexcept
{
    if (const int32_t switched = transfer.switchLine()) return switched;
    const XFile file(fileName, 2, 0);  // write only, cut to length 0, binary
    if (!file.opened()) return ZOR_XMODEM_FILE_OPEN;
    const auto size = static_cast<uint32_t>(std::max(transfer.port().xmodemPacketSize, kLongPacket));
    std::unique_ptr<unsigned char[]> packet(
        new (std::nothrow) unsigned char[kNumberSize + size + kLongestCheck]);
    if (packet == nullptr) return ZOR_RS232_NO_MEMORY;
    bool crcMode = false;
    if (const int32_t started = XModemStartRcvConnection(transfer, &crcMode)) return started;
    bool end = false;
    for (unsigned char expected = 1; !end; ++expected)
        if (const int32_t error =
                XModemComtoFileDdataPacket(transfer, file, crcMode, expected, packet.get(), &end))
            return error;
    return 0;
}

// A whole transfer in the frame of an exported call: the line switched back
// and the last byte sent before the call's result is recorded.
int32_t runTransfer(int32_t port, const char *function, int32_t (*move)(Transfer &, const char *),
                    const char *fileName) noexcept
{
    PortCall call(port, function);
    if (!call) return call.result();
    int32_t result = 0;
    {
        Transfer transfer(port, *call.port());
        result = move(transfer, fileName);
    }
    return call.finish(result);
}

}  // namespace
}  // namespace tollan::rs232

using namespace tollan::rs232;

int32_t XModemConfig(int32_t port, double startDelay, int32_t maximumTries, double waitPeriod,
                     int32_t packetSize) noexcept
{
    PortCall call(port, "QX_XModemConfig");
    if (!call) return call.result();
    ComPort &record = *call.port();
    if (!(startDelay >= 0.0)) return call.finish(ZOR_XMODEM_INVALID_START_DELAY);
    if (maximumTries < 0) return call.finish(ZOR_XMODEM_INVALID_TRIES);
    if (!(waitPeriod >= 0.0) || !(waitPeriod * 1000.0 < 2147483648.0))
        return call.finish(ZOR_XMODEM_INVALID_WAIT_PERIOD);
    if (packetSize < 0) return call.finish(ZOR_XMODEM_INVALID_PACKET_SIZE);
    if (packetSize > record.inputQueueSize) return call.finish(ZOR_XMODEM_PACKET_TOO_LONG);
    record.xmodemStartDelay = startDelay == 0.0 ? 10.0 : startDelay;
    record.xmodemMaxTries = maximumTries == 0 ? 10 : maximumTries;
    record.xmodemWaitPeriod = waitPeriod == 0.0 ? 10.0 : waitPeriod;
    record.xmodemPacketSize = packetSize == 0 ? 128 : packetSize;
    return call.finish(0);
}

int32_t XModemSend(int32_t port, const char *fileName) noexcept
{
    return runTransfer(port, "QX_XModemSend", sendFile, fileName);
}

int32_t XModemReceive(int32_t port, const char *fileName) noexcept
{
    return runTransfer(port, "QX_XModemReceive", receiveFile, fileName);
}

int32_t XModemSetProgressCallback(int32_t port, XModemProgressCallback callback, void *callbackData) noexcept
{
    PortCall call(port, "QX_XModemSetProgressCallback");
    if (!call) return call.result();
    call.port()->xmodemProgress = callback;
    call.port()->xmodemProgressData = callbackData;
    return call.finish(0);
}

int32_t __SetXModemFlushesQs(int32_t flag) noexcept
{
    return flushesQueues.exchange(flag != 0 ? 1 : 0);
}
