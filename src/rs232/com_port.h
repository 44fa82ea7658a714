// The record of one port number: its device, settings, locks and writing
// thread. Made the first time the number is opened, kept until the library
// shuts down; closing only resets it.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "platform/event.h"
#include "platform/lock.h"
#include "platform/serial.h"
#include "platform/thread.h"

#include <tollan/rs232.h>

namespace tollan::rs232 {

inline constexpr int32_t kFirstPort = 1;
inline constexpr int32_t kLastPort = 1000;

inline constexpr int32_t kDefaultBaud = 9600;
inline constexpr uint8_t kDefaultDataBits = 7;
inline constexpr int32_t kDefaultQueueSize = 512;
inline constexpr int32_t kDefaultTimeoutMs = 5000;

// The writing thread of a port and the queue it drains. Every field belongs
// to whoever holds `lock`.
struct WriteThread {
    platform::SerialPort *device = nullptr;  // set once SetUpWritingThread ran
    std::unique_ptr<platform::Thread> thread;
    std::unique_ptr<platform::Event> wake;
    bool queueWasFull = false;
    platform::RecursiveLock lock;
    // A ring of `capacity` bytes: `bytesInQ` of them wait from `head` on,
    // wrapping at the end. The thread writes its chunks straight out of it.
    std::unique_ptr<unsigned char[]> queue;
    // A second ring of the same size. A flush during a write hands the
    // queue's memory to that write and takes this one, so that bytes queued
    // behind the flush never change the write in progress.
    std::unique_ptr<unsigned char[]> spare;
    // Set when the thread has made the room that a waiting writer asked
    // for (`roomWanted` bytes free), and whenever the queue empties, stalls
    // or is dropped.
    std::unique_ptr<platform::Event> room;
    uint32_t roomWanted = 1;
    uint32_t capacity = 0;
    bool synchronous = false;
    uint32_t head = 0;
    uint32_t bytesInQ = 0;
    double msPerCharacter = 0.0;
    std::atomic<bool> stop{false};
    // Read without the lock by ReturnRS232Err's scan.
    std::atomic<uint32_t> ownerThreadId{0};
    int32_t deferredError = 0;
    bool flushRequested = false;
    // The thread holds a chunk that it is writing.
    bool writing = false;
    // That chunk lies in `queue` (not yet handed over by a flush).
    bool chunkInQueue = false;
};

struct ComPort {
    int32_t number = 0;
    platform::RecursiveLock lock;
    std::unique_ptr<platform::SerialPort> device;
    std::unique_ptr<char[]> deviceName;  // the full device path while open
    std::atomic<bool> open{false};       // also read by ReturnRS232Err's scan, without the port lock
    uint32_t openCount = 0;
    bool bytePushedBack = false;
    unsigned char pushedBackByte = 0;
    uint32_t accumulatedStatus = 0;
    int32_t baudRate = kDefaultBaud;
    uint8_t parity = 0;
    uint8_t dataBits = kDefaultDataBits;
    uint8_t stopBits = 1;
    int32_t inputQueueSize = kDefaultQueueSize;
    int32_t outputQueueSize = kDefaultQueueSize;
    bool synchronousWrites = false;
    // Also read by the writing thread to size its chunks.
    std::atomic<int32_t> timeoutMs{kDefaultTimeoutMs};
    bool xonXoffMode = false;
    bool ctsMode = false;
    uint8_t dtrMode = 1;  // 1 held on, 2 handshaking
    // XModem's settings of the port.
    double xmodemStartDelay = 10.0;
    int32_t xmodemMaxTries = 10;
    double xmodemWaitPeriod = 10.0;
    int32_t xmodemPacketSize = 128;
    XModemProgressCallback xmodemProgress = nullptr;
    void *xmodemProgressData = nullptr;
    uint32_t lastInputLength = 0;
    WriteThread writeThread;

    // Settings, modes and XModem values back to their defaults (not the XON/
    // XOFF mode and the open count, which survive a close).
    void resetSettings() noexcept;
};

// The data-bit mask: 0x1F, 0x3F, 0x7F or 0xFF for 5 to 8 data bits.
inline unsigned char dataBitMask(const ComPort &port) noexcept
{
    return static_cast<unsigned char>((1u << port.dataBits) - 1);
}

}  // namespace tollan::rs232
