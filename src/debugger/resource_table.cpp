// Resource tracking: every resource a library hands out (a file, a port, a
// stream), recorded with the stack of compiled functions that acquired it,
// in one hash table of the run-time record that all modules share.
#include "debugger/resource_table.h"

#include <atomic>
#include <cstdarg>
#include <cstring>
#include <mutex>

#include <tollan/debugger.h>

#include "debugger/channel.h"
#include "debugger/debugging_level.h"
#include "debugger/events.h"
#include "debugger/lookup3.h"
#include "debugger/resource_entry.h"
#include "debugger/runtime_record.h"
#include "debugger/thread_env.h"
#include "logger/log.h"
#include "platform/debugger.h"
#include "platform/thread.h"
#include "services/lifecycle.h"
#include "services/text_format.h"

namespace tollan::debugger {
namespace {

constexpr const char *kModule = "debugger/cdbstack";
constexpr uint64_t kInitialBuckets = 131072;  // one mebibyte of bucket pointers
constexpr int32_t kNoTable = -102;

size_t roundUp(size_t bytes) noexcept
{
    return (bytes + 7) & ~size_t{7};
}

uint64_t bucketOf(const void *handle, uint64_t bucketCount) noexcept
{
    return hashlittle(&handle, sizeof handle, 0) & (bucketCount - 1);
}

// The calling thread's record when its resources are tracked now.
ZORThreadEnv *trackingThread() noexcept
{
    if (debuggingLevel() < kCheckingLevel || services::isDetaching()) return nullptr;
    ZORThreadEnv *record = existingThreadEnv();
    if (record == nullptr || record->trackResources == 0 || record->location.frame == nullptr) return nullptr;
    return record;
}

// The frames of the record's stack, innermost first. A frame that links to
// itself ends the walk.
template <typename Visit>
void walkFrames(const ZORThreadEnv &record, Visit visit) noexcept
{
    const char *fileName = record.location.fileName;
    for (const ZORFunctionFrame *frame = record.location.frame; frame != nullptr;) {
        visit(*frame, fileName);
        if (frame->savedFrame == frame) break;
        fileName = frame->savedFileName;
        frame = frame->savedFrame;
    }
}

// Clears the last 8-byte word of a text's room before the text goes in:
// the dump reads the entry's texts a word at a time, padding included.
void clearPadding(char *room, size_t size) noexcept
{
    std::memset(room + size - 8, 0, 8);
}

// Copies text into the entry's text area at *at; returns the copy.
const char *placeText(char *&at, const char *text) noexcept
{
    if (text == nullptr) return nullptr;
    const size_t length = std::strlen(text) + 1;
    clearPadding(at, roundUp(length));
    std::memcpy(at, text, length);
    const char *copy = at;
    at += roundUp(length);
    return copy;
}

size_t textSize(const char *text) noexcept
{
    return text != nullptr ? roundUp(std::strlen(text) + 1) : 0;
}

// The table is taken out of the record while it changes and put back
// afterwards: a debugger reading the record meanwhile sees no table rather
// than half of one.
ResourceEntry **takeBuckets(ResourceTable &table) noexcept
{
    return std::atomic_ref<ResourceEntry **>(table.buckets).exchange(nullptr);
}

void putBuckets(ResourceTable &table, ResourceEntry **buckets) noexcept
{
    std::atomic_ref<ResourceEntry **>(table.buckets).exchange(buckets);
}

// Doubles the buckets when the table is 80 % full; keeps the old ones when
// the new array cannot be had.
ResourceEntry **grow(RuntimeRecord &runtime, ResourceEntry **buckets) noexcept
{
    ResourceTable &table = runtime.resources;
    const uint64_t count = table.bucketCount * 2;
    auto **grown = static_cast<ResourceEntry **>(runtime.allocate(count * sizeof(ResourceEntry *)));
    if (grown == nullptr) return buckets;
    std::memset(grown, 0, count * sizeof(ResourceEntry *));
    TOLLAN_LOG(ZOR_LOG_TEMP, kModule, "__ZOR_Resource_Acquire",
               "Resizing hashtable for resource tracking from %zu to %zu buckets (%zu entries).",
               static_cast<size_t>(table.bucketCount), static_cast<size_t>(count),
               static_cast<size_t>(table.entryCount));
    for (uint64_t i = 0; i < table.bucketCount; ++i) {
        for (ResourceEntry *entry = buckets[i]; entry != nullptr;) {
            ResourceEntry *next = entry->next;
            ResourceEntry *&head = grown[bucketOf(entry->handle, count)];
            entry->next = head;
            head = entry;
            entry = next;
        }
    }
    runtime.free(buckets);
    table.bucketCount = count;
    return grown;
}

void insert(RuntimeRecord &runtime, ResourceEntry *entry) noexcept
{
    ResourceTable &table = runtime.resources;
    std::lock_guard hold(*table.lock);
    ResourceEntry **buckets = takeBuckets(table);
    if (buckets == nullptr) {
        buckets = static_cast<ResourceEntry **>(runtime.allocate(kInitialBuckets * sizeof(ResourceEntry *)));
        if (buckets == nullptr) {
            if (!logger::configuring())
                TOLLAN_LOG(ZOR_LOG_WARNING, kModule, "__ZOR_Resource_Acquire", "Err = %d",
                           static_cast<int>(kNoTable));
            runtime.free(entry);
            return;
        }
        std::memset(buckets, 0, kInitialBuckets * sizeof(ResourceEntry *));
        table.bucketCount = kInitialBuckets;
    }
    ResourceEntry *&head = buckets[bucketOf(entry->handle, table.bucketCount)];
    entry->next = head;
    head = entry;
    entry->id = ++table.idCounter;
    ++table.entryCount;
    entry->older = table.newest;
    entry->newer = nullptr;
    (table.newest != nullptr ? table.newest->newer : table.oldest) = entry;
    table.newest = entry;
    if (table.entryCount * 5 >= table.bucketCount * 4) buckets = grow(runtime, buckets);
    putBuckets(table, buckets);
}

// Unlinks the entry of `handle`; null when there is none.
ResourceEntry *remove(ResourceTable &table, const void *handle) noexcept
{
    std::lock_guard hold(*table.lock);
    if (table.entryCount == 0) return nullptr;
    ResourceEntry **buckets = takeBuckets(table);
    if (buckets == nullptr) return nullptr;
    ResourceEntry *found = nullptr;
    for (ResourceEntry **link = &buckets[bucketOf(handle, table.bucketCount)]; *link != nullptr;
         link = &(*link)->next) {
        if ((*link)->handle == handle) {
            found = *link;
            *link = found->next;
            --table.entryCount;
            (found->older != nullptr ? found->older->newer : table.oldest) = found->newer;
            (found->newer != nullptr ? found->newer->older : table.newest) = found->older;
            break;
        }
    }
    putBuckets(table, buckets);
    return found;
}

}  // namespace

void reportFinalTally() noexcept
{
    if (RuntimeRecord *runtime = runtimeRecord())
        sendEventText("@{resources_final_tally|%p:23}@", static_cast<const void *>(&runtime->resources));
}

void releaseResourceTable(RuntimeRecord &runtime) noexcept
{
    if (runtime.resources.lock == nullptr) return;
    ResourceTable &table = runtime.resources;
    std::lock_guard hold(*table.lock);
    ResourceEntry **buckets = takeBuckets(table);
    if (buckets == nullptr) return;
    for (uint64_t i = 0; i < table.bucketCount; ++i) {
        for (ResourceEntry *entry = buckets[i]; entry != nullptr;) {
            ResourceEntry *next = entry->next;
            if (entry->guard == kResourceGuard) runtime.free(entry);
            entry = next;
        }
    }
    runtime.free(buckets);
    table.bucketCount = 0;
    table.entryCount = 0;
    table.oldest = nullptr;
    table.newest = nullptr;
}

}  // namespace tollan::debugger

using namespace tollan::debugger;

void *__ZOR_Resource_Acquire(void *handle, const char *typeName, const char *format, ...) noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    const ZORThreadEnv *record = trackingThread();
    if (runtime == nullptr || record == nullptr || runtime->resources.lock == nullptr) return handle;

    // With the debugger's shared block attached the debugger reads the
    // program's own texts; otherwise the entry keeps copies.
    const bool copyTexts = sharedInfoBlock() == nullptr;
    uint64_t frameCount = 0;
    size_t texts = textSize(typeName) + (copyTexts ? textSize(record->location.fileName) : 0);
    walkFrames(*record, [&](const ZORFunctionFrame &frame, const char *fileName) {
        ++frameCount;
        if (copyTexts) texts += textSize(fileName) + textSize(frame.functionName);
    });
    // The description is measured by writing it: most fit the stack buffer,
    // and a longer one is written a second time into the entry.
    char shortDescription[256];
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    int descriptionLength = 0;
    if (format != nullptr)
        descriptionLength =
            tollan::services::formatText(shortDescription, sizeof shortDescription, format, arguments);
    if (descriptionLength < 0) descriptionLength = 0;
    va_end(arguments);
    const bool fitted = static_cast<size_t>(descriptionLength) < sizeof shortDescription;
    const size_t descriptionSize = roundUp(static_cast<size_t>(descriptionLength) + 1);
    const size_t size = sizeof(ResourceEntry) + frameCount * sizeof(ResourceFrame) + texts + descriptionSize;

    auto *entry = static_cast<ResourceEntry *>(runtime->allocate(size));
    if (entry == nullptr) {
        va_end(again);
        return handle;
    }
    char *text = reinterpret_cast<char *>(entry->frames() + frameCount);
    *entry = ResourceEntry{};
    entry->guard = kResourceGuard;
    entry->self = entry;
    entry->size = size;
    entry->threadId = tollan::platform::currentThreadId();
    entry->handle = handle;
    entry->typeName = placeText(text, typeName);
    entry->description = text;
    clearPadding(text, descriptionSize);
    if (format == nullptr)
        text[0] = '\0';
    else if (fitted)
        std::memcpy(text, shortDescription, static_cast<size_t>(descriptionLength) + 1);
    else
        tollan::services::formatText(text, descriptionSize, format, again);
    va_end(again);
    text += descriptionSize;
    entry->position = packPosition(record->location.line, record->location.column);
    entry->fileName = copyTexts ? placeText(text, record->location.fileName) : record->location.fileName;
    entry->functionWord = record->location.functionWord;
    entry->frameCount = frameCount;
    ResourceFrame *frame = entry->frames();
    walkFrames(*record, [&](const ZORFunctionFrame &entered, const char *fileName) {
        *frame++ = ResourceFrame{copyTexts ? placeText(text, fileName) : fileName, entered.startPosition,
                                 entered.endPosition,
                                 copyTexts ? placeText(text, entered.functionName) : entered.functionName};
    });
    insert(*runtime, entry);
    return handle;
}

void *__ZOR_Resource_Release(void *handle) noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    if (runtime == nullptr || runtime->resources.lock == nullptr || tollan::services::isDetaching())
        return handle;
    ResourceEntry *entry = remove(runtime->resources, handle);
    if (entry == nullptr) return handle;
    const bool tellDebugger = entry->flags != 0;
    if (entry->guard == kResourceGuard) runtime->free(entry);
    if (tellDebugger) {
        if (sharedInfoBlock() != nullptr) {
            sendEventText("@{debugger_event|34|%p:17}@", handle);
        } else if (tollan::platform::debuggerPresent()) {
            sendEventText("@{resource_release|%p:18}@", handle);
            breakIntoDebugger();
        }
    }
    return handle;
}

int32_t __ZOR_Resource_IsEnabled(void) noexcept
{
    return trackingThread() != nullptr ? 1 : 0;
}

int32_t SetEnableResourceTracking(int32_t on) noexcept
{
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    if (record == nullptr) return 0;
    const int32_t previous = record->trackResources;
    record->trackResources = on != 0 ? 1 : 0;
    return previous;
}

int32_t GetEnableResourceTracking(void) noexcept
{
    const ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    return record != nullptr ? record->trackResources : 0;
}

void __ZOR_Resource_LockTable(void) noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    if (runtime != nullptr && runtime->resources.lock != nullptr) runtime->resources.lock->lock();
}

void __ZOR_Resource_UnlockTable(void) noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    if (runtime != nullptr && runtime->resources.lock != nullptr) runtime->resources.lock->unlock();
}
