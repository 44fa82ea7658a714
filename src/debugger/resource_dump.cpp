// __ZOR_Resource_DumpToFile: every tracked resource, oldest first, with the
// stack that acquired it.
#include <cstring>
#include <mutex>

#include <tollan/debugger.h>
#include <tollan/list.h>

#include "debugger/channel.h"
#include "debugger/resource_entry.h"
#include "debugger/runtime_record.h"
#include "logger/log.h"
#include "platform/file.h"

namespace tollan::debugger {
namespace {

constexpr const char *kModule = "debugger/cdbstack";
constexpr int32_t kCannotWrite = -102;
constexpr int32_t kListFailed = -260;
// Where the debugger's shared block names the two handles of its own that a
// dump leaves out.
constexpr size_t kSkippedHandles = 64;

int32_t warnFailure(int32_t code) noexcept
{
    if (!logger::configuring())
        TOLLAN_LOG(ZOR_LOG_WARNING, kModule, "__ZOR_Resource_DumpToFile", "Err = %d", static_cast<int>(code));
    return code;
}

// An entry of the dump's list: the id beside the entry, so that ordering
// never has to reach into the entries themselves.
struct Listed {
    uint64_t id;
    const ResourceEntry *entry;
};

int32_t compareIds(const void *a, const void *b)
{
    const uint64_t x = static_cast<const Listed *>(a)->id;
    const uint64_t y = static_cast<const Listed *>(b)->id;
    return (x > y) - (x < y);
}

// Collects output in large pieces: a dump is one write per 64 KiB.
class DumpWriter {
public:
    explicit DumpWriter(platform::NativeFile file) noexcept : file_(file) {}
    ~DumpWriter() { flush(); }
    DumpWriter(const DumpWriter &) = delete;
    DumpWriter &operator=(const DumpWriter &) = delete;

    template <size_t Size>
    void text(const char (&literal)[Size]) noexcept
    {
        bytes(literal, Size - 1);
    }
    void text(const char *value) noexcept
    {
        if (value == nullptr) value = "(null)";
        bytes(value, std::strlen(value));
    }
    void bytes(const char *value, size_t length) noexcept
    {
        if (length <= sizeof buffer_ - used_) {
            std::memcpy(buffer_ + used_, value, length);
            used_ += length;
            return;
        }
        while (length > 0) {
            if (used_ == sizeof buffer_) flush();
            const size_t piece = length < sizeof buffer_ - used_ ? length : sizeof buffer_ - used_;
            std::memcpy(buffer_ + used_, value, piece);
            used_ += piece;
            value += piece;
            length -= piece;
        }
    }
    void number(uint64_t value) noexcept
    {
        char digits[24];
        char *const end = digits + sizeof digits;
        char *first = end;
        do {
            *--first = static_cast<char>('0' + value % 10);
            value /= 10;
        } while (value != 0);
        bytes(first, static_cast<size_t>(end - first));
    }
    void position(uint64_t packed) noexcept
    {
        number(static_cast<uint64_t>(positionLine(packed)));
        text(".");
        number(static_cast<uint64_t>(positionColumn(packed)));
    }
    bool failed() const noexcept { return failed_; }
    void flush() noexcept
    {
        if (used_ > 0 && platform::writeFile(file_, buffer_, static_cast<uint32_t>(used_)) != platform::FileError::none)
            failed_ = true;
        used_ = 0;
    }

private:
    platform::NativeFile file_;
    char buffer_[64 * 1024];
    size_t used_ = 0;
    bool failed_ = false;
};

void writeEntry(DumpWriter &out, const ResourceEntry &entry) noexcept
{
    // "<place> <id> (<type>) <description>", then one line per frame.
    out.text(entry.fileName);
    out.text(":");
    out.position(entry.position);
    out.text(" ");
    out.number(entry.id);
    out.text(" (");
    out.text(entry.typeName);
    out.text(") ");
    out.text(entry.description);
    out.text("\n");
    for (uint64_t i = 0; i < entry.frameCount; ++i) {
        const ResourceFrame &frame = entry.frames()[i];
        out.text("    ");
        out.number(i);
        out.text(": ");
        out.text(frame.fileName);
        out.text(":");
        out.position(frame.start);
        out.text("-");
        out.position(frame.end);
        out.text(" (");
        out.text(frame.functionName);
        out.text(")\n");
    }
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

    ResourceTable &table = runtime->resources;
    // Held for the whole dump: no entry may be freed while it is written out.
    std::lock_guard hold(*table.lock);
    const size_t capacity = static_cast<size_t>(table.entryCount);
    ListType list = LCreateWithOptions(sizeof(Listed), 0, static_cast<uint32_t>(capacity),
                                       GetDefaultCollectionMemAllocFunctions());
    if (list == nullptr) return warnFailure(kListFailed);
    // Filled in place, from the chain of entries in the order they were
    // acquired: the list has room for every entry the table counts, and the
    // sort by id finds it in order already.
    auto *items = static_cast<Listed *>(LGetListDataPtr(list));
    size_t listed = 0;
    uint64_t skippedCount = 0;
    for (const ResourceEntry *entry = table.oldest; entry != nullptr && listed < capacity;
         entry = entry->newer) {
        if (entry->handle != nullptr && (entry->handle == skipped[0] || entry->handle == skipped[1]))
            ++skippedCount;
        else
            items[listed++] = Listed{entry->id, entry};
    }
    LSetNumItems(list, static_cast<int32_t>(listed));
    LQuickSort(list, compareIds);

    tollan::platform::FileOpenRequest request;
    request.write = true;
    request.create = true;
    request.truncate = true;
    tollan::platform::NativeFile file = tollan::platform::kNoFile;
    if (path == nullptr || tollan::platform::openFile(path, request, &file) != tollan::platform::FileError::none) {
        LDiscard(list);
        return warnFailure(kCannotWrite);
    }
    bool failed = false;
    {
        DumpWriter out(file);
        const int32_t count = LNumItems(list);
        if (table.entryCount != static_cast<uint64_t>(count) + skippedCount) {
            out.text(kModule);
            out.text(":");
            out.number(__LINE__);
            out.text(":error: gCdbSynchronize->resources.numEntries != LNumItems (list)\n");
        }
        items = static_cast<Listed *>(LGetListDataPtr(list));
        // The entries lie all over the heap: each is fetched a few entries
        // before it is written out.
        constexpr int32_t kAhead = 8;
        for (int32_t i = 0; i < count; ++i) {
            if (i + kAhead < count) {
                const char *ahead = reinterpret_cast<const char *>(items[i + kAhead].entry);
                for (size_t line = 0; line < 256; line += 64) __builtin_prefetch(ahead + line);
            }
            writeEntry(out, *items[i].entry);
        }
        out.flush();
        failed = out.failed();
    }
    LDiscard(list);
    failed = tollan::platform::closeFile(file) != tollan::platform::FileError::none || failed;
    return failed ? warnFailure(kCannotWrite) : 0;
}
