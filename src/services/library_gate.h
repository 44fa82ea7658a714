// A library's gate. Every exported call that reaches a table the library
// frees at shutdown passes the gate: it goes in while the library is open
// and leaves when it returns. Shutdown closes the gate, so that later calls
// are turned away with the library's "not available" result, and waits for
// the calls still inside to leave before it frees anything they could reach.
// On POSIX the loader runs shutdown at exit() while other threads still run;
// this is what keeps them off freed tables.
#pragma once

#include <atomic>
#include <cstdint>

namespace tollan::services {

class LibraryGate {
public:
    // True when the call may go in; it must leave() afterwards. False once the
    // gate is closed.
    bool enter() noexcept
    {
        // Turned away without touching the count once closed, so that callers
        // in a loop cannot keep it from ever reaching zero.
        if ((state_.load(std::memory_order_acquire) & kClosed) != 0) return false;
        if ((state_.fetch_add(1, std::memory_order_acquire) & kClosed) == 0) return true;
        leave();
        return false;
    }
    void leave() noexcept { state_.fetch_sub(1, std::memory_order_release); }

    // Turns every later call away and waits until the calls inside have left,
    // for at most `limitMs` milliseconds. True when none is left inside; false
    // when one stays (blocked in a read, say): what it uses must then stay.
    bool close(uint32_t limitMs) noexcept;
    // Opens the gate again, for a library that starts anew.
    void open() noexcept { state_.fetch_and(~kClosed, std::memory_order_release); }
    bool isOpen() const noexcept { return (state_.load(std::memory_order_acquire) & kClosed) == 0; }

private:
    static constexpr uint32_t kClosed = 0x80000000u;
    std::atomic<uint32_t> state_{0};  // the closed bit and the number of calls inside
};

// One call's passage through a gate.
class GatePass {
public:
    explicit GatePass(LibraryGate &gate) noexcept : gate_(gate), entered_(gate.enter()) {}
    ~GatePass()
    {
        if (entered_) gate_.leave();
    }
    GatePass(const GatePass &) = delete;
    GatePass &operator=(const GatePass &) = delete;
    explicit operator bool() const noexcept { return entered_; }

private:
    LibraryGate &gate_;
    bool entered_;
};

// How long shutdown waits for the calls inside a gate: long enough for any
// call that is merely busy; 0 when the system has already stopped every
// other thread (Windows at process exit).
uint32_t shutdownWaitMs() noexcept;
void setShutdownWaitMs(uint32_t ms) noexcept;

}  // namespace tollan::services
