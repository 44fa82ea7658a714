// One tracked resource, as it lies in the program's memory: the debugger
// (tollan-monitor on POSIX) reads these records out of the stopped program,
// so their layout is part of the protocol.
//
// An entry is one allocation: the header below, then frameCount frame
// records, then the texts that are copied (type name, description and, when
// no debugger's shared block is attached, the file names and function names),
// each in whole 8-byte words from an 8-byte boundary, the bytes after its
// terminator zero: the dump reads them a word at a time.
#pragma once

#include <cstdint>

namespace tollan::debugger {

inline constexpr uint64_t kResourceGuard = 0xDEADBEA7CAFEBABEull;

// Source positions are packed as line << 10 | column.
inline constexpr uint64_t packPosition(int64_t line, int64_t column) noexcept
{
    return (static_cast<uint64_t>(line) & 0xFFFFFu) << 10 | (static_cast<uint64_t>(column) & 0x3FFu);
}
inline constexpr int32_t positionLine(uint64_t packed) noexcept
{
    return static_cast<int32_t>((packed >> 10) & 0xFFFFFu);
}
inline constexpr int32_t positionColumn(uint64_t packed) noexcept
{
    return static_cast<int32_t>(packed & 0x3FFu);
}

// An outer function of the acquiring stack, innermost first.
struct ResourceFrame {
    const char *fileName;
    uint64_t start;  // packed position where the function starts
    uint64_t end;    // and where it ends
    const char *functionName;
};
static_assert(sizeof(ResourceFrame) == 32);

struct ResourceEntry {
    uint64_t guard;       // kResourceGuard while the entry is intact
    ResourceEntry *next;  // in the same hash bucket
    uint64_t id;          // running number of the acquisition
    ResourceEntry *self;
    uint64_t size;   // of the whole allocation
    uint32_t flags;  // set by the debugger: tell it when the resource is released
    uint32_t threadId;
    void *handle;
    const char *typeName;
    const char *description;
    uint64_t position;     // where the acquiring function stood (packed)
    const char *fileName;  // its file
    uint64_t functionWord;
    uint64_t frameCount;
    // The chain of all entries in the order they were acquired.
    ResourceEntry *older;
    ResourceEntry *newer;
    // frameCount ResourceFrame records follow.

    ResourceFrame *frames() noexcept { return reinterpret_cast<ResourceFrame *>(this + 1); }
    const ResourceFrame *frames() const noexcept { return reinterpret_cast<const ResourceFrame *>(this + 1); }
};
static_assert(sizeof(ResourceEntry) % 8 == 0);

}  // namespace tollan::debugger
