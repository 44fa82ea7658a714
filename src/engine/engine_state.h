// The engine frame's process-wide state. Everything here is written on the
// loading thread during attach and detach; the flags that other threads read
// while the process goes down are atomic.
#pragma once

#include <atomic>
#include <cstdint>

namespace tollan::engine {

struct EngineState {
    void *moduleInstance = nullptr;  // the library's own handle
    uint32_t mainThreadId = 0;
    void *applicationInstance = nullptr;        // the host executable's handle
    void *windowApplicationInstance = nullptr;  // the copy the window code keeps
    int32_t showWindowCode = 0;
    bool noPreviousInstance = false;
    // Length-prefixed; one more byte for the terminator WInitApp writes.
    unsigned char applicationName[257] = {};
    bool platformDetected = false;
    uint32_t osMajorVersion = 0;
    uint32_t osMinorVersion = 0;
    bool threadVarSlotsAllocated = false;
    bool asyncProtection = false;  // gates WExitApp
    bool runtimeLibrariesReady = false;
    uint32_t startupTimingHandle = 0;
    std::atomic<bool> initialised{false};
    std::atomic<bool> detaching{false};
    std::atomic<bool> closed{false};
    std::atomic<bool> startupFailure{false};
    std::atomic<bool> exitingAbnormally{false};
    // Set by the debug channel on the IDE's request; nothing sets them while
    // the library runs without one.
    std::atomic<int32_t> simulateShuttingDown{0};
    std::atomic<bool> startupLibraryRefused{false};
};

extern constinit EngineState state;

}  // namespace tollan::engine
