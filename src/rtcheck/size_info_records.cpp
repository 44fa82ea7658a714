// The records of handed-out blocks, in a table hashed by address.
#include "rtcheck/size_info_records.h"

#include <cstring>
#include <mutex>

#include <tollan/debugger.h>

#include "platform/lock.h"
#include "rtcheck/pointer_info.h"
#include "services/memory.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kOutOfMemoryMessage = 191;
constexpr size_t kBuckets = 256;

struct RecordTable {
    platform::RecursiveLock lock;
    SizeInfoRecord *buckets[kBuckets]{};
};

RecordTable &recordTable() noexcept
{
    static RecordTable table;
    return table;
}

SizeInfoRecord *&bucketOf(RecordTable &table, const void *base) noexcept
{
    // Blocks are at least 16-byte aligned, so the low bits tell nothing.
    return table.buckets[(reinterpret_cast<uintptr_t>(base) >> 4) % kBuckets];
}

uint64_t addressOf(const void *pointer) noexcept
{
    return reinterpret_cast<uintptr_t>(pointer);
}

void reportOutOfMemory() noexcept
{
    const ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    ReportUPError(ZOR_RTE_FATAL, kOutOfMemoryMessage, record != nullptr ? record->location.line : 0,
                  record != nullptr ? record->location.column : 0);
}

// Room for `entries` strings; the arrays it replaces stay allocated (their
// blocks may be named by the caller's copies of the strings' pointers).
bool makeRoom(SizeInfoRecord &record, uint64_t entries) noexcept
{
    if (entries <= record.capacity && record.shadow != nullptr) return true;
    constexpr uint64_t kEntryBytes = sizeof(PtrInfo) + sizeof(BlkInfo);
    if (entries > SIZE_MAX / kEntryBytes) return false;
    auto *shadow = static_cast<PtrInfo *>(services::allocateZeroedBlock(entries * sizeof(PtrInfo)));
    auto *strings = static_cast<BlkInfo *>(services::allocateZeroedBlock(entries * sizeof(BlkInfo)));
    if (shadow == nullptr || strings == nullptr) {
        services::freeBlock(shadow);
        services::freeBlock(strings);
        return false;
    }
    record.shadow = shadow;
    record.strings = strings;
    record.capacity = entries;
    return true;
}

}  // namespace

SizeInfoRecord *existingRecordOf(const void *base) noexcept
{
    RecordTable &table = recordTable();
    std::lock_guard guard(table.lock);
    for (SizeInfoRecord *record = bucketOf(table, base); record != nullptr; record = record->next)
        if (record->block.base == addressOf(base)) return record;
    return nullptr;
}

SizeInfoRecord *recordOf(const void *base) noexcept
{
    RecordTable &table = recordTable();
    std::lock_guard guard(table.lock);
    if (SizeInfoRecord *record = existingRecordOf(base)) return record;
    auto *record = static_cast<SizeInfoRecord *>(services::allocateZeroedBlock(sizeof(SizeInfoRecord)));
    if (record == nullptr) {
        reportOutOfMemory();
        return nullptr;
    }
    record->block.base = addressOf(base);
    SizeInfoRecord *&bucket = bucketOf(table, base);
    record->next = bucket;
    bucket = record;
    return record;
}

void describeBlock(SizeInfoRecord &record, uint64_t size) noexcept
{
    record.block.size = size;
    // The arrays stay for a later description as strings.
    record.stringCount = 0;
}

bool describeStrings(SizeInfoRecord &record, char *const *strings, uint64_t count, bool terminated) noexcept
{
    const uint64_t entries = count + (terminated ? 1 : 0);
    if (entries < count || entries > SIZE_MAX / sizeof(char *) || !makeRoom(record, entries)) {
        reportOutOfMemory();
        // Without the strings' information the array's bounds cannot be known either.
        describeBlock(record, ZOR_BLK_UNCHECKED | ~ZOR_BLK_UNCHECKED);
        return false;
    }
    record.block.size = entries * sizeof(char *);
    record.stringCount = entries;
    for (uint64_t i = 0; i < entries; ++i) {
        const char *text = strings[i];
        if (text == nullptr) {
            record.strings[i] = BlkInfo{};
            record.shadow[i] = nullPointerInfo();
            continue;
        }
        record.strings[i] = BlkInfo{addressOf(text), std::strlen(text) + 1};
        // Text holds no pointers: the information's first word only has to be a real address.
        record.shadow[i] =
            PtrInfo{addressOf(&record.strings[i]), addressOf(&record.strings[i]), addressOf(text)};
    }
    return true;
}

void markFreed(SizeInfoRecord &record, bool withStrings) noexcept
{
    record.block.size = 0;
    if (!withStrings) return;
    for (uint64_t i = 0; i < record.stringCount; ++i) record.strings[i].size = 0;
}

PtrInfo pointerTo(const SizeInfoRecord &record) noexcept
{
    const void *shadow = record.stringCount != 0 ? static_cast<const void *>(record.shadow) : &record.block;
    return PtrInfo{addressOf(shadow), addressOf(&record.block), record.block.base};
}

PtrInfo nullPointerInfo() noexcept
{
    return PtrInfo{addressOf(predefinedEntry(kNullEntry)), 0, 0};
}

PtrInfo uncheckedPointerInfo(const void *value) noexcept
{
    return PtrInfo{addressOf(predefinedEntry(kUncheckedEntry)), 0, addressOf(value)};
}

}  // namespace tollan::rtcheck
