// The resources a program still holds when it ends: at "resources_final_tally"
// the monitor walks the program's resource table (ResourceTable, a hash
// table of ResourceEntry chains) while the program waits for its answer.
// Everything read is checked: a bad pointer, a broken guard word or a chain
// longer than the table's own count ends the walk instead of the monitor.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "process_memory.h"

namespace tollan::monitor {

struct HeldResource {
    struct Frame {
        std::string fileName;
        uint64_t start;  // packed positions, line << 10 | column
        uint64_t end;
        std::string functionName;
    };
    uint64_t id = 0;
    uint32_t threadId = 0;
    std::string typeName;
    std::string description;
    std::string fileName;
    uint64_t position = 0;
    std::vector<Frame> frames;  // innermost first
};

struct ResourceTally {
    std::vector<HeldResource> resources;  // oldest (lowest id) first
    // What stopped or disturbed the walk; empty when the table was whole.
    std::vector<std::string> problems;
};

// The most entries and buckets the monitor believes a table to have.
inline constexpr uint64_t kMaxEntries = 1u << 20;
inline constexpr uint64_t kMaxBuckets = 1u << 22;
inline constexpr uint64_t kMaxFrames = 4096;

// Reads the table at `tableAddress` in the program.
ResourceTally readResourceTally(const ProcessMemory &memory, uint64_t tableAddress);

// The report: "N resources still held:", then each resource and its stack.
std::vector<std::string> describeResourceTally(const ResourceTally &tally);

}  // namespace tollan::monitor
