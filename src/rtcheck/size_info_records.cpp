// The records of handed-out blocks, in a table hashed by address.
#include "rtcheck/size_info_records.h"

#include <cstring>
#include <mutex>
#include <new>

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

// Never destroyed: twins may hand out and free memory while the process
// ends, after the destructors of statics have run.
RecordTable &recordTable() noexcept
{
    alignas(RecordTable) static unsigned char storage[sizeof(RecordTable)];
    static RecordTable *const table = new (storage) RecordTable;
    return *table;
}

SizeInfoRecord *&bucketOf(RecordTable &table, const void *base) noexcept
{
    // Heap blocks and pointer arrays are 8-byte aligned: the low bits tell nothing.
    return table.buckets[(reinterpret_cast<uintptr_t>(base) >> 3) % kBuckets];
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

void describeString(SizeInfoRecord &record, uint64_t i, const char *text) noexcept
{
    if (text == nullptr) {
        record.strings[i] = BlkInfo{};
        record.shadow[i] = nullPointerInfo();
        return;
    }
    record.strings[i] = BlkInfo{addressOf(text), std::strlen(text) + 1};
    // Text holds no pointers: the information's first word only has to be a real address.
    record.shadow[i] = PtrInfo{addressOf(&record.strings[i]), addressOf(&record.strings[i]), addressOf(text)};
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
    SizeInfoRecord *record = existingRecordOf(base);
    if (record != nullptr) return record;
    {
        RecordTable &table = recordTable();
        std::lock_guard guard(table.lock);
        // Another thread may have made it meanwhile.
        if ((record = existingRecordOf(base)) != nullptr) return record;
        record = static_cast<SizeInfoRecord *>(services::allocateZeroedBlock(sizeof(SizeInfoRecord)));
        if (record != nullptr) {
            record->block.base = addressOf(base);
            SizeInfoRecord *&bucket = bucketOf(table, base);
            record->next = bucket;
            bucket = record;
            return record;
        }
    }
    // Reported outside the lock: the report may wait for the developer.
    reportOutOfMemory();
    return nullptr;
}

void describeBlock(SizeInfoRecord &record, uint64_t size) noexcept
{
    std::lock_guard guard(recordTable().lock);
    record.block.size = size;
    // The arrays stay for a later description as strings.
    record.stringCount = 0;
}

bool describeStrings(SizeInfoRecord &record, char *const *strings, uint64_t count, bool terminated) noexcept
{
    const uint64_t entries = count + (terminated ? 1 : 0);
    {
        std::lock_guard guard(recordTable().lock);
        if (entries >= count && entries <= SIZE_MAX / sizeof(char *) && makeRoom(record, entries)) {
            record.block.size = entries * sizeof(char *);
            record.stringCount = entries;
            for (uint64_t i = 0; i < entries; ++i) describeString(record, i, strings[i]);
            return true;
        }
        // Without the strings' information the array's bounds cannot be known either.
        record.block.size = ZOR_BLK_UNCHECKED | ~ZOR_BLK_UNCHECKED;
        record.stringCount = 0;
    }
    reportOutOfMemory();
    return false;
}

void markFreed(SizeInfoRecord &record, bool withStrings) noexcept
{
    std::lock_guard guard(recordTable().lock);
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
