// The table of port records (1..1000), the library lock that guards it, and
// the frame every exported call on a port runs in.
#pragma once

#include <cstdint>
#include <source_location>

#include "platform/lock.h"
#include "services/library_gate.h"
#include "rs232/com_port.h"

namespace tollan::rs232 {

// The library lock: the table, record creation, the highest port, and the
// scan of ReturnRS232Err. Taken alone, never inside a port lock.
platform::RecursiveLock &libraryLock() noexcept;
// The record of a port number; null when it has none (or the number is out of range).
ComPort *portRecord(int32_t port) noexcept;
// The highest port number that ever got a record.
int32_t highestPort() noexcept;
inline bool validPort(int32_t port) noexcept
{
    return port >= kFirstPort && port <= kLastPort;
}

// Makes the port's record (with its defaults) when it has none. 0, or -11.
int32_t CreateSystemObjectsForComPort(int32_t port) noexcept;
// Closes every open port and frees every record, once the calls on ports
// have left (see LibraryGate); calls made meanwhile fail with -3. With
// `reopen`, calls are let in again afterwards (the program stopped, the
// library goes on); otherwise they stay out (the library shuts down).
void closeAndFreeAllPorts(bool reopen) noexcept;

// The frame of an exported call on a port: checks the number (-2), holds the
// port's lock for the rest of the call, refuses a port that is not open
// (-3, unless the call works on closed ports too), and at the end records the
// result as the thread's last error and logs a failure.
class PortCall {
public:
    PortCall(int32_t port, const char *function, bool needsOpen = true,
             std::source_location where = std::source_location::current()) noexcept;
    ~PortCall();
    PortCall(const PortCall &) = delete;
    PortCall &operator=(const PortCall &) = delete;

    // False when the call ends at once; result() is then its code.
    explicit operator bool() const noexcept { return port_ != nullptr && refused_ == 0; }
    int32_t result() const noexcept { return refused_; }
    // The port's record (null for a port without one).
    ComPort *port() const noexcept { return port_; }
    // Records and logs the call's result, leaves the port's lock, returns it.
    int32_t finish(int32_t result, std::source_location where = std::source_location::current()) noexcept;

private:
    services::GatePass pass_;
    const char *function_;
    ComPort *port_ = nullptr;
    bool locked_ = false;
    int32_t refused_ = 0;
};

}  // namespace tollan::rs232
