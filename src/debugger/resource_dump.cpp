// __ZOR_Resource_DumpToFile: every tracked resource, oldest first, with the
// stack that acquired it.
#include <bit>
#include <cstring>
#include <mutex>

#include <tollan/debugger.h>

#include "debugger/channel.h"
#include "debugger/decimal_text.h"
#include "debugger/resource_entry.h"
#include "debugger/runtime_record.h"
#include "logger/log.h"
#include "platform/file.h"
#include "services/memory.h"

namespace tollan::debugger {
namespace {

constexpr const char *kModule = "debugger/cdbstack";
constexpr int32_t kCannotWrite = -102;
constexpr int32_t kNoMemory = -260;
// Where the debugger's shared block names the two handles of its own that a
// dump leaves out.
constexpr size_t kSkippedHandles = 64;
// The line number that the error line of a table whose count disagrees with
// its chain has always carried; readers of dumps know the error by it.
constexpr uint64_t kCountErrorLine = 193;

int32_t warnFailure(int32_t code) noexcept
{
    if (!logger::configuring())
        TOLLAN_LOG(ZOR_LOG_WARNING, kModule, "__ZOR_Resource_DumpToFile", "Err = %d", static_cast<int>(code));
    return code;
}

// The pieces of a dump line between two texts go straight into the buffer:
// each piece below writes at `at` and returns where it ended.
template <size_t Size>
char *put(char *at, const char (&literal)[Size]) noexcept
{
    std::memcpy(at, literal, Size - 1);
    return at + Size - 1;
}

char *put(char *at, uint64_t value) noexcept
{
    return putDecimal(at, value);
}

char *putPosition(char *at, uint64_t packed) noexcept
{
    at = put(at, static_cast<uint64_t>(positionLine(packed)));
    *at++ = '.';
    return put(at, static_cast<uint64_t>(positionColumn(packed)));
}

// Collects output in large pieces: a write to a file costs the system
// about as much for a few kilobytes as for a mebibyte. The place where the
// next byte goes is the caller's local variable `at`: stores through a char
// pointer may change any object, so a position kept in this object would be
// read from memory again after each of them.
class DumpWriter {
public:
    static constexpr size_t kBufferSize = 1024 * 1024;

    // buffer: kBufferSize bytes.
    DumpWriter(platform::NativeFile file, char *buffer) noexcept : file_(file), buffer_(buffer) {}
    DumpWriter(const DumpWriter &) = delete;
    DumpWriter &operator=(const DumpWriter &) = delete;

    char *start() const noexcept { return buffer_; }
    // Where `size` bytes go: at `at`, or at the start once what lies before
    // `at` is written out.
    char *room(char *at, size_t size) noexcept
    {
        return static_cast<size_t>(buffer_ + kBufferSize - at) >= size ? at : drain(at);
    }
    // Writes out what lies before `at`; returns the start of the buffer.
    [[gnu::noinline]] char *drain(char *at) noexcept
    {
        if (at != buffer_ && platform::writeFile(file_, buffer_, static_cast<uint32_t>(at - buffer_)) !=
                                 platform::FileError::none)
            failed_ = true;
        return buffer_;
    }
    bool failed() const noexcept { return failed_; }

private:
    platform::NativeFile file_;
    char *buffer_;
    bool failed_ = false;
};

// A dump alternates texts with runs of short pieces (numbers, punctuation).
// Each text leaves room for the run after it, so that a run needs no check
// of its own: the longest run is a frame's two positions with the text
// around them, or a description's line end with the next frame's number.
constexpr size_t kRunRoom = 64;

// Copies a terminated text ("(null)" for none) as it is measured. Out of
// line: such texts are rare (the program's own, with a debugger attached).
[[gnu::noinline]] char *putText(DumpWriter &out, char *at, const char *text) noexcept
{
    if (text == nullptr) text = "(null)";
    for (at = out.room(at, kRunRoom); *text != '\0'; ++text) {
        *at++ = *text;
        at = out.room(at, kRunRoom);
    }
    return at;
}

// Copies a terminated text that fills whole 8-byte words, padded with zeros,
// a word at a time: the texts of an entry are mostly a word or two long,
// which a copy byte by byte pays for in branches.
char *putPaddedText(DumpWriter &out, char *at, const char *text) noexcept
{
    static_assert(std::endian::native == std::endian::little, "the first zero byte is the lowest");
    constexpr uint64_t kOnes = 0x0101010101010101ull;
    constexpr uint64_t kHighBits = 0x8080808080808080ull;
    for (;; text += sizeof(uint64_t), at += sizeof(uint64_t)) {
        at = out.room(at, sizeof(uint64_t) + kRunRoom);
        uint64_t word;
        std::memcpy(&word, text, sizeof word);
        std::memcpy(at, &word, sizeof word);
        // The lowest high bit marks the first zero byte; bits above it may
        // be wrong, bits below it never are.
        const uint64_t zeros = (word - kOnes) & ~word & kHighBits;
        if (zeros != 0) return at + std::countr_zero(zeros) / 8;
    }
}

// Copies a text of the entry: one of its own copies (which lie in its
// allocation, in whole zero-padded words) a word at a time, any other (the
// program's own, with a debugger's shared block attached) byte by byte.
char *putEntryText(DumpWriter &out, char *at, const ResourceEntry &entry, const char *text) noexcept
{
    const auto first = reinterpret_cast<uintptr_t>(&entry);
    const auto place = reinterpret_cast<uintptr_t>(text);
    if (place - first < entry.size && place % sizeof(uint64_t) == 0) return putPaddedText(out, at, text);
    return putText(out, at, text);
}

char *putEntry(DumpWriter &out, char *at, const ResourceEntry &entry) noexcept
{
    // "<place> <id> (<type>) <description>", then one line per frame.
    at = putEntryText(out, at, entry, entry.fileName);
    at = put(at, ":");
    at = putPosition(at, entry.position);
    at = put(at, " ");
    at = put(at, entry.id);
    at = put(at, " (");
    at = putEntryText(out, at, entry, entry.typeName);
    at = put(at, ") ");
    at = putEntryText(out, at, entry, entry.description);
    at = put(at, "\n");
    for (uint64_t i = 0; i < entry.frameCount; ++i) {
        const ResourceFrame &frame = entry.frames()[i];
        at = put(at, "    ");
        at = put(at, i);
        at = put(at, ": ");
        at = putEntryText(out, at, entry, frame.fileName);
        at = put(at, ":");
        at = putPosition(at, frame.start);
        at = put(at, "-");
        at = putPosition(at, frame.end);
        at = put(at, " (");
        at = putEntryText(out, at, entry, frame.functionName);
        at = put(at, ")\n");
    }
    return at;
}

void fetchSoon(const ResourceEntry *entry) noexcept
{
    const char *const bytes = reinterpret_cast<const char *>(entry);
    for (size_t line = 0; line < 256; line += 64) __builtin_prefetch(bytes + line);
}

// Visits the entries that a dump lists, oldest first, and says whether the
// table's count agrees with them. The chain holds the entries in the order
// they were acquired, which is the order of their ids; the debugger's own
// handles are left out, and no more entries are listed than the table counts.
template <typename Visit>
bool visitListed(const ResourceTable &table, const void *const (&skipped)[2], Visit visit) noexcept
{
    // The entries lie all over the heap: the walk fetches each a few entries
    // before it is visited.
    constexpr int kAhead = 8;
    const ResourceEntry *ahead = table.oldest;
    for (int i = 0; i < kAhead && ahead != nullptr; ++i, ahead = ahead->newer) fetchSoon(ahead);
    uint64_t listed = 0;
    uint64_t skippedCount = 0;
    for (const ResourceEntry *entry = table.oldest; entry != nullptr && listed < table.entryCount;
         entry = entry->newer) {
        if (ahead != nullptr) {
            fetchSoon(ahead);
            ahead = ahead->newer;
        }
        if (entry->handle != nullptr && (entry->handle == skipped[0] || entry->handle == skipped[1])) {
            ++skippedCount;
        } else {
            visit(*entry);
            ++listed;
        }
    }
    return table.entryCount == listed + skippedCount;
}

bool openDump(const char *path, platform::NativeFile *file) noexcept
{
    platform::FileOpenRequest request;
    request.write = true;
    request.create = true;
    request.truncate = true;
    return path != nullptr && platform::openFile(path, request, file) == platform::FileError::none;
}

// Writes the dump into the open file through buffer (kBufferSize bytes) and
// closes the file; false when a write or the close fails.
bool writeDump(platform::NativeFile file, char *buffer, const ResourceTable &table,
               const void *const (&skipped)[2], bool countDisagrees, bool *agrees) noexcept
{
    DumpWriter out(file, buffer);
    char *at = out.start();
    if (countDisagrees) {
        at = putText(out, at, kModule);
        at = put(at, ":");
        at = put(at, kCountErrorLine);
        at = putText(out, at, ":error: gCdbSynchronize->resources.numEntries != LNumItems (list)\n");
    }
    *agrees = visitListed(table, skipped, [&](const ResourceEntry &entry) { at = putEntry(out, at, entry); });
    out.drain(at);
    return platform::closeFile(file) == platform::FileError::none && !out.failed();
}

}  // namespace
}  // namespace tollan::debugger

using namespace tollan::debugger;

int32_t __ZOR_Resource_DumpToFile(const char *path) noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    if (runtime == nullptr || runtime->resources.lock == nullptr) return warnFailure(kCannotWrite);
    const void *skipped[2] = {nullptr, nullptr};
    if (const unsigned char *block = sharedInfoBlock())
        std::memcpy(skipped, block + kSkippedHandles, sizeof skipped);

    const ResourceTable &table = runtime->resources;
    // Held for the whole dump: no entry may be freed while it is written out.
    std::lock_guard hold(*table.lock);
    auto *buffer = static_cast<char *>(tollan::services::allocateBlock(DumpWriter::kBufferSize));
    if (buffer == nullptr) return warnFailure(kNoMemory);
    tollan::platform::NativeFile file = tollan::platform::kNoFile;
    if (!openDump(path, &file)) {
        tollan::services::freeBlock(buffer);
        return warnFailure(kCannotWrite);
    }
    // The entries are written as the walk finds them. Only at its end does
    // the walk know whether the count agrees with them; when it does not
    // (a damaged table), the dump is written again behind the error line.
    bool agrees = true;
    bool written = writeDump(file, buffer, table, skipped, false, &agrees);
    if (written && !agrees)
        written = openDump(path, &file) && writeDump(file, buffer, table, skipped, true, &agrees);
    tollan::services::freeBlock(buffer);
    return written ? 0 : warnFailure(kCannotWrite);
}
