#include "rs232/port_table.h"

#include <atomic>
#include <bitset>
#include <mutex>
#include <new>

#include <tollan/debugger.h>
#include <tollan/rs232.h>

#include "rs232/errors.h"
#include "rs232/open_close.h"
#include "platform/thread.h"

namespace tollan::rs232 {
namespace {

std::atomic<ComPort *> ports[kLastPort + 1];
std::atomic<int32_t> highest{0};
// Every call on a port passes here; freeing the records closes it first.
constinit services::LibraryGate gate;

}  // namespace

void ComPort::resetSettings() noexcept
{
    bytePushedBack = false;
    accumulatedStatus = 0;
    baudRate = kDefaultBaud;
    parity = 0;
    dataBits = kDefaultDataBits;
    stopBits = 1;
    inputQueueSize = kDefaultQueueSize;
    outputQueueSize = kDefaultQueueSize;
    synchronousWrites = false;
    timeoutMs = kDefaultTimeoutMs;
    ctsMode = false;
    dtrMode = 1;
    xmodemStartDelay = 10.0;
    xmodemMaxTries = 10;
    xmodemWaitPeriod = 10.0;
    xmodemPacketSize = 128;
    xmodemProgress = nullptr;
    xmodemProgressData = nullptr;
    lastInputLength = 0;
}

platform::RecursiveLock &libraryLock() noexcept
{
    // Made on first use and kept for the life of the process: a thread may
    // still reach it while the library shuts down.
    static platform::RecursiveLock *const lock = new (std::nothrow) platform::RecursiveLock;
    return *lock;
}

ComPort *portRecord(int32_t port) noexcept
{
    return validPort(port) ? ports[port].load(std::memory_order_acquire) : nullptr;
}

int32_t highestPort() noexcept
{
    return highest.load(std::memory_order_acquire);
}

int32_t CreateSystemObjectsForComPort(int32_t port) noexcept
{
    if (!validPort(port)) return ZOR_RS232_INVALID_PORT;
    // The library's own records are no resources of the program.
    const int32_t tracking = SetEnableResourceTracking(0);
    int32_t result = 0;
    {
        std::lock_guard hold(libraryLock());
        if (ports[port].load() == nullptr) {
            auto *record = new (std::nothrow) ComPort;
            if (record == nullptr) {
                result = ZOR_RS232_NO_MEMORY;
            } else {
                record->number = port;
                ports[port].store(record, std::memory_order_release);
                if (port > highest.load()) highest.store(port, std::memory_order_release);
            }
        }
    }
    SetEnableResourceTracking(tracking);
    return result;
}

void closeAndFreeAllPorts(bool reopen) noexcept
{
    if (!gate.close(services::shutdownWaitMs())) {
        // A call is still inside (a read without time-out, say) and holds its
        // port: the records stay, and the system closes the devices at exit.
        logFailure(ZOR_RS232_INTERNAL_ERROR, "QXRS232Shutdown");
        if (reopen) gate.open();
        return;
    }
    const int32_t last = highestPort();
    for (int32_t port = kFirstPort; port <= last; ++port) {
        ComPort *record = portRecord(port);
        if (record == nullptr) continue;
        std::lock_guard hold(record->lock);
        if (record->open) ClosePortAndReset(*record, true);
    }
    for (int32_t port = kFirstPort; port <= last; ++port) {
        std::lock_guard hold(libraryLock());
        delete ports[port].exchange(nullptr);
    }
    highest.store(0);
    if (reopen) gate.open();
}

PortCall::PortCall(int32_t port, const char *function, bool needsOpen, std::source_location where) noexcept
    : pass_(gate), function_(function)
{
    if (!pass_) {
        refused_ = ZOR_RS232_PORT_NOT_OPEN;
        finish(refused_, where);
        return;
    }
    if (!validPort(port)) {
        refused_ = ZOR_RS232_INVALID_PORT;
        finish(refused_, where);
        return;
    }
    port_ = portRecord(port);
    if (port_ != nullptr) {
        port_->lock.lock();
        locked_ = true;
    }
    if (needsOpen && (port_ == nullptr || !port_->open)) {
        refused_ = ZOR_RS232_PORT_NOT_OPEN;
        finish(refused_, where);
    }
}

PortCall::~PortCall()
{
    if (locked_) port_->lock.unlock();
}

int32_t PortCall::finish(int32_t result, std::source_location where) noexcept
{
    SetRS232Err(result);
    logFailure(result, function_, where);
    if (locked_) {
        port_->lock.unlock();
        locked_ = false;
    }
    return result;
}

}  // namespace tollan::rs232

using namespace tollan::rs232;

int32_t ReturnRS232Err(void) noexcept
{
    const int32_t own = threadError();
    if (own < 0) return own;
    tollan::services::GatePass pass(gate);
    if (!pass) return 0;
    // The ports whose writing thread writes for this thread; their blocks
    // are looked at after the library lock is left.
    const uint32_t me = tollan::platform::currentThreadId();
    std::bitset<kLastPort + 1> mine;
    const int32_t last = highestPort();
    {
        std::lock_guard hold(libraryLock());
        for (int32_t port = kFirstPort; port <= last; ++port) {
            const ComPort *record = portRecord(port);
            mine[port] = record != nullptr && record->open && record->writeThread.ownerThreadId == me;
        }
    }
    for (int32_t port = kFirstPort; port <= last; ++port) {
        if (!mine[port]) continue;
        WriteThread &writer = portRecord(port)->writeThread;
        std::lock_guard hold(writer.lock);
        if (portRecord(port)->open && writer.deferredError < 0 && writer.ownerThreadId == me) {
            const int32_t deferred = writer.deferredError;
            writer.deferredError = 0;
            return SetRS232Err(deferred);
        }
    }
    return 0;
}
