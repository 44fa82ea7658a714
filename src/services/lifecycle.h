// Where the library stands in its life. The engine's start-up and shutdown
// chains write this record; every other part of the library only asks.
#pragma once

#include <atomic>
#include <cstdint>

namespace tollan::services {

struct Lifecycle {
    // Set when the whole process-attach chain succeeded.
    std::atomic<bool> initialised{false};
    // Set at the very start of process detach.
    std::atomic<bool> detaching{false};
    // Set at the end of the shutdown chain; the library does no more work.
    std::atomic<bool> closed{false};
    // A resource the start-up chain needs could not be had.
    std::atomic<bool> startupFailure{false};
    // ZORRTDllAbnormalExit is ending the process.
    std::atomic<bool> exitingAbnormally{false};
    // The user stopped the program with a break from the debugger.
    std::atomic<bool> endedByUserBreak{false};
    // Written once on the loading thread, before any other thread can ask.
    void *moduleInstance = nullptr;  // the library's own handle
    uint32_t mainThreadId = 0;
    bool platformDetected = false;
    uint32_t osMajorVersion = 0;
    uint32_t osMinorVersion = 0;
};

// The process's record.
Lifecycle &lifecycle() noexcept;

// True from the first moment of process detach on. Code that must not touch
// other modules while the process is going down checks this first.
bool isDetaching() noexcept;
// True once the shutdown chain has finished.
bool isClosed() noexcept;
// Records that a resource the start-up chain needs could not be had (no
// thread-local index, a debug link that cannot be set up). The chain fails.
void setStartupFailure() noexcept;
// The id of the thread that ran start-up.
uint32_t mainThreadId() noexcept;
// True once the operating system's version has been read at start-up.
bool osVersionKnown() noexcept;

}  // namespace tollan::services
