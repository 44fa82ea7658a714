// Thread-local slots kept by the library itself: each thread has one table of
// values behind a single pthread key. The key's destructor runs the engine's
// thread-exit handler while every slot of the ending thread can still be read
// (with one pthread key per slot, the system would clear some of them before
// the handler ran), then frees the table.
#include "platform/tls.h"

#include <pthread.h>

#include <atomic>
#include <cstdlib>
#include <mutex>

#include "platform/thread.h"

namespace tollan::platform {

namespace {

// As many slots as Windows offers.
constexpr TlsIndex kMaxSlots = 1088;

struct Cell {
    uint32_t generation;
    void *value;
};

struct ThreadTable {
    bool armed;
    TlsIndex capacity;
    Cell *cells;
};

std::mutex slotMutex;  // serialises allocation; lookups read slotInUse alone
std::atomic<bool> slotInUse[kMaxSlots];
// Bumped when a slot is freed, so that values stored under the slot's earlier
// owner read as null in every thread, as when Windows clears a freed slot.
std::atomic<uint32_t> slotGeneration[kMaxSlots];

std::atomic<ThreadExitHandler> exitHandler{nullptr};
// Guards the key's creation and deletion; lookups read tableKeyReady alone.
std::mutex keyMutex;
pthread_key_t tableKey;
std::atomic<bool> tableKeyReady{false};
// Threads running endThread right now: unloading waits for them to leave
// the library's code.
std::atomic<int> exitsRunning{0};

thread_local ThreadTable *threadTable = nullptr;

void freeTable(ThreadTable *table) noexcept
{
    std::free(table->cells);
    std::free(table);
}

void endThread(void *value) noexcept
{
    exitsRunning.fetch_add(1);
    auto *table = static_cast<ThreadTable *>(value);
    if (table->armed) {
        table->armed = false;
        if (auto handler = exitHandler.load(std::memory_order_acquire)) handler();
    }
    // The handler may have stored values again; they end with the table.
    threadTable = nullptr;
    freeTable(table);
    exitsRunning.fetch_sub(1);
}

bool haveTableKey() noexcept
{
    if (tableKeyReady.load(std::memory_order_acquire)) return true;
    std::lock_guard guard(keyMutex);
    if (!tableKeyReady.load(std::memory_order_relaxed) && pthread_key_create(&tableKey, endThread) == 0)
        tableKeyReady.store(true, std::memory_order_release);
    return tableKeyReady.load(std::memory_order_relaxed);
}

// The calling thread's table with room for slot `index`; null when memory or
// the key is lacking.
ThreadTable *tableFor(TlsIndex index) noexcept
{
    ThreadTable *table = threadTable;
    if (table && index < table->capacity) return table;
    if (!table) {
        if (!haveTableKey()) return nullptr;
        table = static_cast<ThreadTable *>(std::calloc(1, sizeof(ThreadTable)));
        if (!table) return nullptr;
        if (pthread_setspecific(tableKey, table) != 0) {
            std::free(table);
            return nullptr;
        }
        threadTable = table;
    }
    TlsIndex capacity = table->capacity ? table->capacity : 16;
    while (capacity <= index) capacity *= 2;
    auto *cells = static_cast<Cell *>(std::realloc(table->cells, capacity * sizeof(Cell)));
    if (!cells) return nullptr;
    for (TlsIndex i = table->capacity; i < capacity; ++i) cells[i] = Cell{0, nullptr};
    table->cells = cells;
    table->capacity = capacity;
    return table;
}

}  // namespace

bool tlsAlloc(TlsIndex *index) noexcept
{
    std::lock_guard guard(slotMutex);
    for (TlsIndex i = 0; i < kMaxSlots; ++i) {
        if (!slotInUse[i].load(std::memory_order_relaxed)) {
            slotInUse[i].store(true, std::memory_order_release);
            *index = i;
            return true;
        }
    }
    return false;
}

void tlsFree(TlsIndex index) noexcept
{
    if (index >= kMaxSlots) return;
    std::lock_guard guard(slotMutex);
    if (!slotInUse[index].load(std::memory_order_relaxed)) return;
    slotInUse[index].store(false, std::memory_order_release);
    slotGeneration[index].fetch_add(1, std::memory_order_relaxed);
}

void *tlsGet(TlsIndex index) noexcept
{
    const ThreadTable *table = threadTable;
    if (!table || index >= table->capacity) return nullptr;
    const Cell &cell = table->cells[index];
    return cell.generation == slotGeneration[index].load(std::memory_order_relaxed) ? cell.value : nullptr;
}

bool tlsSet(TlsIndex index, void *value) noexcept
{
    if (index >= kMaxSlots || !slotInUse[index].load(std::memory_order_acquire)) return false;
    ThreadTable *table = tableFor(index);
    if (!table) return false;
    table->cells[index] = Cell{slotGeneration[index].load(std::memory_order_relaxed), value};
    return true;
}

ThreadExitHandler setThreadExitHandler(ThreadExitHandler handler) noexcept
{
    return exitHandler.exchange(handler, std::memory_order_acq_rel);
}

void armThreadExit() noexcept
{
    if (ThreadTable *table = tableFor(0)) table->armed = true;
}

void stopThreadExitNotifications() noexcept
{
    {
        std::lock_guard guard(keyMutex);
        if (!tableKeyReady.exchange(false)) return;
        // From here on no ending thread calls into the library; the tables of
        // threads still alive are left to them, as Windows leaves a thread's
        // storage when a library goes away before the thread.
        pthread_key_delete(tableKey);
    }
    if (ThreadTable *own = threadTable) {
        threadTable = nullptr;
        freeTable(own);
    }
    // A thread that began ending just before is still in endThread.
    for (int waited = 0; exitsRunning.load() != 0 && waited < 1000; ++waited) sleepMs(1);
}

}  // namespace tollan::platform
