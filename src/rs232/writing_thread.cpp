#include "rs232/writing_thread.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include <tollan/logger.h>
#include <tollan/rs232.h>

#include "logger/log.h"
#include "platform/thread.h"
#include "rs232/errors.h"
#include "rs232/settings.h"

namespace tollan::rs232 {
namespace {

using Hold = std::lock_guard<platform::RecursiveLock>;

constexpr uint32_t kLongestChunk = 16384;
constexpr uint32_t kLongestWriteMs = 1000;
constexpr uint32_t kShortestWriteMs = 10;
constexpr uint32_t kMarginMs = 200;

// How long writing k bytes may take: the characters' time, stretched a
// little more the faster the line (f grows with the baud rate).
class WriteTimes {
public:
    WriteTimes(const ComPort &port) noexcept
        : factor_(1.0 + std::log(port.baudRate / 10.0) / 20.0),
          cap_(std::min(port.writeThread.capacity, kLongestChunk)),
          msPerCharacter_(port.writeThread.msPerCharacter)
    {
    }
    uint32_t forBytes(uint32_t count) const noexcept
    {
        const double ms = factor_ * std::min(count, cap_) * msPerCharacter_;
        return ms >= 1.0 ? (ms < 4294967295.0 ? static_cast<uint32_t>(ms) : UINT32_MAX) : 1;
    }

private:
    double factor_;
    uint32_t cap_;
    double msPerCharacter_;
};

// The next chunk of n waiting bytes and its write time-out. A chunk's write
// ends at least 200 ms before the port's time-out (unless that time-out is
// too short even for one character) and never takes more than a second.
void chooseChunk(const ComPort &port, uint32_t n, bool stalled, uint32_t *chunk,
                 uint32_t *writeTimeout) noexcept
{
    const WriteTimes times(port);
    *chunk = n;
    if (stalled) {
        // The last write moved nothing: the whole queue with twice the time.
        if (*writeTimeout * 2 <= kLongestWriteMs) *writeTimeout *= 2;
        return;
    }
    const uint32_t one = times.forBytes(1);
    const auto portTimeout = static_cast<uint32_t>(port.timeoutMs);
    uint32_t t = times.forBytes(*chunk);
    while (t > kShortestWriteMs) {
        const bool fitsPortTimeout = portTimeout <= one + kMarginMs || t + kMarginMs < portTimeout;
        if ((fitsPortTimeout && t <= kLongestWriteMs) || *chunk == 1) {
            *writeTimeout = t;
            return;
        }
        *chunk = std::max(*chunk / 2, 1u);
        t = times.forBytes(*chunk);
    }
    *writeTimeout = kShortestWriteMs;
}

// Drops everything queued; the ring starts again at its beginning.
void emptyQueue(WriteThread &writer) noexcept
{
    writer.bytesInQ = 0;
    writer.head = 0;
}

// Drains the queue whenever it is woken, until told to stop. A chunk is
// written straight out of the ring and never runs past its end: the bytes
// after the wrap are the next chunk.
void WritingThreadProc(void *argument) noexcept
{
    ComPort &port = *static_cast<ComPort *>(argument);
    WriteThread &writer = port.writeThread;
    for (;;) {
        writer.wake->wait(platform::kWaitForever);
        if (writer.stop.load()) return;
        bool stalled = false;
        uint32_t writeTimeout = kShortestWriteMs;
        for (;;) {
            uint32_t chunk = 0;
            const unsigned char *from = nullptr;
            {
                Hold hold(writer.lock);
                writer.flushRequested = false;
                if (writer.bytesInQ == 0 || writer.stop.load()) break;
                const uint32_t n = std::min(writer.bytesInQ, writer.capacity - writer.head);
                chooseChunk(port, n, stalled, &chunk, &writeTimeout);
                from = writer.queue.get() + writer.head;
                writer.writing = true;
                writer.chunkInQueue = true;
            }
            const uint32_t written = WriteChunk(port, from, chunk, writeTimeout);
            bool roomMade = false;
            {
                Hold hold(writer.lock);
                writer.writing = false;
                writer.chunkInQueue = false;
                stalled = written == 0;
                if (!stalled && writer.bytesInQ != 0 && !writer.flushRequested) {
                    if (!(written < INT_MAX))
                        ZORAssert("bytesWritten < INT_MAX", kLogModule, "WritingThreadProc", __LINE__,
                                  nullptr);
                    const uint32_t taken = std::min(written, writer.bytesInQ);
                    writer.bytesInQ -= taken;
                    writer.head = writer.bytesInQ == 0 ? 0 : (writer.head + taken) % writer.capacity;
                }
                // A writer waiting for room sleeps on until there is enough
                // of it to be worth waking for.
                roomMade = writer.capacity - writer.bytesInQ >= writer.roomWanted;
            }
            if (stalled || roomMade) writer.room->set();
            if (stalled) platform::sleepMs(1);
        }
        writer.room->set();
    }
}

}  // namespace

int32_t SetUpWritingThread(ComPort &port) noexcept
{
    WriteThread &writer = port.writeThread;
    if (writer.device != nullptr) return ZOR_RS232_SYSTEM_ERROR;
    {
        Hold hold(writer.lock);
        writer.deferredError = 0;
    }
    writer.synchronous = port.synchronousWrites;
    writer.capacity = static_cast<uint32_t>(port.outputQueueSize);
    writer.queueWasFull = false;
    emptyQueue(writer);
    writer.chunkInQueue = false;
    writer.flushRequested = false;
    writer.stop.store(false);
    if (!writer.synchronous) {
        const int parityBit = port.parity != 0 ? 1 : 0;
        writer.msPerCharacter = 1000.0 * (1 + parityBit + port.dataBits + port.stopBits) / port.baudRate;
        writer.queue.reset(new (std::nothrow) unsigned char[writer.capacity]);
        writer.spare.reset(new (std::nothrow) unsigned char[writer.capacity]);
        if (writer.queue == nullptr || writer.spare == nullptr) {
            writer.queue.reset();
            writer.spare.reset();
            return ZOR_RS232_NO_MEMORY;
        }
        writer.wake = platform::Event::create(false, false, nullptr);
        writer.room = platform::Event::create(false, false, nullptr);
        if (writer.wake == nullptr || writer.room == nullptr) {
            writer.queue.reset();
            writer.spare.reset();
            writer.wake.reset();
            writer.room.reset();
            return ZOR_RS232_NO_RESOURCES;
        }
    }
    writer.device = port.device.get();
    if (writer.synchronous) return 0;
    writer.thread = platform::Thread::start(WritingThreadProc, &port);
    if (writer.thread == nullptr) {
        writer.device = nullptr;
        writer.queue.reset();
        writer.spare.reset();
        writer.wake.reset();
        writer.room.reset();
        return ZOR_RS232_NO_RESOURCES;
    }
    // The thread writes on behalf of whoever set it up, at that thread's priority.
    if (!writer.thread->setPriority(platform::currentThreadPriority())) return ZOR_RS232_INTERNAL_ERROR;
    return 0;
}

void ShutDownWritingThread(ComPort &port) noexcept
{
    WriteThread &writer = port.writeThread;
    if (writer.device == nullptr) return;
    writer.stop.store(true);
    FlushAndAbortTransfer(port, false);
    if (writer.thread != nullptr) {
        writer.wake->set();
        writer.thread->join();
        writer.thread.reset();
    }
    writer.wake.reset();
    writer.room.reset();
    writer.queue.reset();
    writer.spare.reset();
    writer.device = nullptr;
}

bool FlushAndAbortTransfer(ComPort &port, bool receiveToo) noexcept
{
    WriteThread &writer = port.writeThread;
    Hold hold(writer.lock);
    writer.flushRequested = true;
    emptyQueue(writer);
    if (writer.chunkInQueue) {
        std::swap(writer.queue, writer.spare);
        writer.chunkInQueue = false;
    }
    uint32_t flags = platform::kPurgeTransmitAbort | platform::kPurgeTransmitClear;
    if (receiveToo) flags |= platform::kPurgeReceiveAbort | platform::kPurgeReceiveClear;
    const bool purged = port.device != nullptr && port.device->purge(flags);
    if (!purged) logFailure(ZOR_RS232_SYSTEM_ERROR, "FlushAndAbortTransfer");
    return purged;
}

uint32_t QueueSomeBytes(ComPort &port, uint32_t count, const unsigned char *bytes) noexcept
{
    WriteThread &writer = port.writeThread;
    uint32_t n = 0;
    {
        Hold hold(writer.lock);
        n = std::min(count, writer.capacity - writer.bytesInQ);
        if (n == 0) return 0;
        writer.queueWasFull = n < count;
        const uint32_t tail = (writer.head + writer.bytesInQ) % writer.capacity;
        const uint32_t beforeWrap = std::min(n, writer.capacity - tail);
        std::memcpy(writer.queue.get() + tail, bytes, beforeWrap);
        std::memcpy(writer.queue.get(), bytes + beforeWrap, n - beforeWrap);
        if (!(UINT_MAX - writer.bytesInQ >= n))
            ZORAssert("UINT_MAX - portPtr->writeThread.bytesInQ >= writtenCnt", kLogModule, "QueueSomeBytes",
                      __LINE__, "overflow");
        writer.bytesInQ += n;
        writer.ownerThreadId = platform::currentThreadId();
    }
    // Woken once the lock is free, so that the thread does not wake only to wait for it.
    writer.wake->set();
    return n;
}

uint32_t WriteOrQueue(ComPort &port, uint32_t count, const unsigned char *bytes, uint32_t waitMs,
                      int32_t *error) noexcept
{
    WriteThread &writer = port.writeThread;
    *error = 0;
    const auto failed = [error]() noexcept {
        *error = MapWin32CommError();
        if (*error == 0) *error = ZOR_RS232_SYSTEM_ERROR;
    };
    uint32_t direct = 0;
    uint32_t beyondQueue = 0;
    // Queued after the lock is let go (only this caller adds to the queue:
    // it holds the port), so that waking the thread does not make it wait.
    bool queueOnly = false;
    {
        Hold hold(writer.lock);
        queueOnly = writer.bytesInQ != 0 || writer.writing || writer.stop.load();
        beyondQueue = count > writer.capacity ? count - writer.capacity : 0;
        if (queueOnly) {
        } else if (beyondQueue == 0) {
            if (!writer.device->writeNow(bytes, count, &direct)) {
                failed();
                return 0;
            }
        } else {
            // More than the queue holds: the caller would only wait for the
            // thread to drain it piece by piece, so it writes what does not
            // fit itself, as the thread would, and keeps the thread out
            // meanwhile. (Flushes and closes need the port, which the caller
            // holds.)
            writer.writing = true;
            ApplyWriteTimeout(port, std::max(waitMs, 1u));
        }
    }
    if (queueOnly) return QueueSomeBytes(port, count, bytes);
    if (beyondQueue == 0) return direct + QueueSomeBytes(port, count - direct, bytes + direct);
    const bool done = writer.device->write(bytes, beyondQueue, &direct);
    Hold hold(writer.lock);
    writer.writing = false;
    if (!done) {
        failed();
        return direct;
    }
    // A line that stopped taking bytes leaves the queue full, as a write
    // through the thread alone would.
    if (direct < beyondQueue) direct += QueueSomeBytes(port, count - direct, bytes + direct);
    return direct;
}

uint32_t WriteChunk(ComPort &port, const unsigned char *bytes, uint32_t count,
                    uint32_t writeTimeoutMs) noexcept
{
    WriteThread &writer = port.writeThread;
    {
        Hold hold(writer.lock);
        if (writer.flushRequested) {
            writer.flushRequested = false;
            return 0;
        }
        if (writer.stop.load() || count == 0) return 0;
        ApplyWriteTimeout(port, writeTimeoutMs);
    }
    uint32_t written = 0;
    if (writer.device->write(bytes, count, &written)) return written;
    if (platform::lastSerialError() == platform::kSerialAborted) return written;
    const int32_t error = MapWin32CommError();
    Hold hold(writer.lock);
    writer.deferredError = error;
    // What is queued cannot reach the device: it is dropped with the error,
    // which is reported once.
    emptyQueue(writer);
    return written;
}

void waitForQueueSpace(ComPort &port, uint32_t wanted, uint32_t ms) noexcept
{
    WriteThread &writer = port.writeThread;
    if (writer.room == nullptr) return;
    {
        Hold hold(writer.lock);
        writer.roomWanted = std::clamp(wanted, 1u, std::max(writer.capacity / 2, 1u));
        if (writer.capacity - writer.bytesInQ >= writer.roomWanted) return;
    }
    writer.room->wait(ms);
}

int32_t takeDeferredError(ComPort &port) noexcept
{
    WriteThread &writer = port.writeThread;
    Hold hold(writer.lock);
    const int32_t error = writer.deferredError;
    writer.deferredError = 0;
    return error;
}

}  // namespace tollan::rs232
