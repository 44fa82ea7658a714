// The debugger's control block: the words through which the debugger steers
// the program's threads. The library makes it; the debugger finds it through
// the run-time record's second word (published in the shared information
// block) and writes it while the program's threads are stopped or waiting.
#pragma once

#include <cstdint>

namespace tollan::debugger {

// Stepping modes, as the "set_exe_state" texts name them.
enum SteppingMode : uint32_t { kContinue = 0, kInto = 1, kNext = 2, kOut = 3, kOver = 4 };

struct DebugControl {
    uint32_t steppingThreadId;    // the thread that owns the stepping state; 0 for none
    uint32_t steppingMode;        // a SteppingMode
    uint32_t refreshWatchpoints;  // set by the debugger, cleared by the next break
    uint32_t reserved0;
    // A hook the debugger installs, called (guarded) before every break.
    void (*resetHook)(void *argument);
    void *resetHookArgument;
    unsigned char reserved[1752 - 32];
    // The process's running execution context (-1 for none); the shared
    // information block publishes its address.
    int64_t executionContext;
};
static_assert(sizeof(DebugControl) == 1760);

}  // namespace tollan::debugger
