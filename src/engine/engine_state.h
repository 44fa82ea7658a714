// The engine frame's own process-wide state, written on the loading thread
// during attach and detach. What the rest of the library may ask about the
// library's life is in services/lifecycle.h.
#pragma once

#include <cstdint>

namespace tollan::engine {

struct EngineState {
    void *applicationInstance = nullptr;        // the host executable's handle
    void *windowApplicationInstance = nullptr;  // the copy the window code keeps
    int32_t showWindowCode = 0;
    bool noPreviousInstance = false;
    // Length-prefixed; one more byte for the terminator WInitApp writes.
    unsigned char applicationName[257] = {};
    bool threadVarSlotsAllocated = false;
    bool asyncProtection = false;  // gates WExitApp
    bool runtimeLibrariesReady = false;
    uint32_t startupTimingHandle = 0;
};

extern constinit EngineState state;

}  // namespace tollan::engine
