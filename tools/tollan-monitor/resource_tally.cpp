#include "resource_tally.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "debugger/resource_entry.h"
#include "debugger/runtime_record.h"

namespace tollan::monitor {
namespace {

using debugger::ResourceEntry;
using debugger::ResourceFrame;

uint64_t address(const void *pointer)
{
    return reinterpret_cast<uintptr_t>(pointer);
}

std::string hex(uint64_t value)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%" PRIx64, value);
    return text;
}

std::string position(uint64_t packed)
{
    return std::to_string(debugger::positionLine(packed)) + "." +
           std::to_string(debugger::positionColumn(packed));
}

// Reads the entry at `at`; an empty string when it is whole, else what is wrong.
std::string readEntry(const ProcessMemory &memory, uint64_t at, ResourceEntry *entry, HeldResource *resource)
{
    if (!memory.read(at, entry)) return "the entry at " + hex(at) + " cannot be read";
    if (entry->guard != debugger::kResourceGuard)
        return "the entry at " + hex(at) + " has a broken guard word";
    if (address(entry->self) != at) return "the entry at " + hex(at) + " does not point to itself";
    if (entry->frameCount > kMaxFrames ||
        sizeof(ResourceEntry) + entry->frameCount * sizeof(ResourceFrame) > entry->size)
        return "the entry at " + hex(at) + " claims " + std::to_string(entry->frameCount) + " frames";
    std::vector<ResourceFrame> frames(entry->frameCount);
    if (!memory.read(at + sizeof(ResourceEntry), frames.data(), frames.size() * sizeof(ResourceFrame)))
        return "the frames of the entry at " + hex(at) + " cannot be read";
    resource->id = entry->id;
    resource->threadId = entry->threadId;
    resource->typeName = memory.describeText(address(entry->typeName));
    resource->description = memory.describeText(address(entry->description));
    resource->fileName = memory.describeText(address(entry->fileName));
    resource->position = entry->position;
    for (const ResourceFrame &frame : frames)
        resource->frames.push_back({memory.describeText(address(frame.fileName)), frame.start, frame.end,
                                    memory.describeText(address(frame.functionName))});
    return {};
}

}  // namespace

ResourceTally readResourceTally(const ProcessMemory &memory, uint64_t tableAddress)
{
    ResourceTally tally;
    debugger::ResourceTable table{};
    if (!memory.read(tableAddress, &table)) {
        tally.problems.push_back("the resource table at " + hex(tableAddress) + " cannot be read");
        return tally;
    }
    if (table.entryCount == 0) return tally;
    if (table.buckets == nullptr) {
        tally.problems.push_back("the resource table is being changed (no bucket array)");
        return tally;
    }
    if (table.bucketCount == 0 || table.bucketCount > kMaxBuckets || table.entryCount > kMaxEntries) {
        tally.problems.push_back("the resource table claims " + std::to_string(table.entryCount) +
                                 " entries in " + std::to_string(table.bucketCount) + " buckets");
        return tally;
    }
    std::vector<uintptr_t> buckets(table.bucketCount);
    if (!memory.read(address(table.buckets), buckets.data(), buckets.size() * sizeof(uintptr_t))) {
        tally.problems.push_back("the bucket array at " + hex(address(table.buckets)) + " cannot be read");
        return tally;
    }
    // Every entry is counted, so no walk goes on longer than the count: a
    // loop or a stray pointer into another chain shows up as one too many.
    uint64_t visited = 0;
    bool tooMany = false;
    for (size_t bucket = 0; bucket < buckets.size() && !tooMany; ++bucket) {
        for (uint64_t at = buckets[bucket]; at != 0;) {
            if (visited == table.entryCount) {
                tally.problems.push_back("the chains hold more entries than the table's " +
                                         std::to_string(table.entryCount) + " (a loop?); the walk stops");
                tooMany = true;
                break;
            }
            ++visited;
            ResourceEntry entry{};
            HeldResource resource;
            const std::string problem = readEntry(memory, at, &entry, &resource);
            if (!problem.empty()) {
                tally.problems.push_back(problem);
                break;  // the rest of this chain cannot be trusted; other chains can
            }
            tally.resources.push_back(std::move(resource));
            at = address(entry.next);
        }
    }
    if (!tooMany && visited < table.entryCount)
        tally.problems.push_back("the table counts " + std::to_string(table.entryCount) +
                                 " entries, the chains hold " + std::to_string(visited));
    std::sort(tally.resources.begin(), tally.resources.end(),
              [](const HeldResource &a, const HeldResource &b) { return a.id < b.id; });
    return tally;
}

std::vector<std::string> describeResourceTally(const ResourceTally &tally)
{
    std::vector<std::string> lines;
    const size_t count = tally.resources.size();
    if (count == 0)
        lines.push_back("no resources still held");
    else
        lines.push_back(std::to_string(count) + (count == 1 ? " resource" : " resources") + " still held:");
    for (const HeldResource &resource : tally.resources) {
        lines.push_back("  #" + std::to_string(resource.id) + " " + resource.typeName + " \"" +
                        resource.description + "\" acquired at " + resource.fileName + ":" +
                        position(resource.position) + " by thread " + std::to_string(resource.threadId));
        for (const HeldResource::Frame &frame : resource.frames)
            lines.push_back("      " + frame.fileName + " " + position(frame.start) + "-" +
                            position(frame.end) + " " + frame.functionName);
    }
    for (const std::string &problem : tally.problems) lines.push_back("  (incomplete: " + problem + ")");
    return lines;
}

}  // namespace tollan::monitor
