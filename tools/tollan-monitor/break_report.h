// What the monitor shows about a thread that broke: its thread-state record
// (ZORThreadEnv), read out of the stopped program, gives the file, line and
// column it stands at, the break reason and the chain of entered functions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "process_memory.h"

namespace tollan::monitor {

struct BreakReport {
    // The first line says where the thread stopped; one line per entered
    // function follows, innermost first.
    std::vector<std::string> lines;
    // The record's break reason; 0 when there is none or it cannot be read.
    int32_t reason = 0;
};

// threadRecord: the address of the thread's record in the program (0: none).
BreakReport describeBreak(const ProcessMemory &memory, uint64_t threadId, uint64_t threadRecord);

// The longest chain of entered functions shown; a longer (or looping) one is cut.
inline constexpr size_t kMaxFramesShown = 64;

}  // namespace tollan::monitor
