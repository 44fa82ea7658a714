#include "services/thread_vars.h"

#include <tollan/engine.h>

#include "services/lifecycle.h"
#include "services/memory.h"
#include "services/thread_var_scheme.h"
#include "logger/log.h"

namespace tollan::services {
namespace {

constexpr const char *kModule = "mgsource/thrdvar";

bool inRange(int32_t slot) noexcept
{
    return slot >= 1 && slot <= ThreadVarScheme::kCells;
}

void logBogusSlot(const char *function) noexcept
{
    TOLLAN_LOG(ZOR_LOG_ERROR, kModule, function, "Bogus thread local storage slot passed to GetZORThreadVar");
}

constinit ThreadVarScheme libraryScheme;

}  // namespace

ThreadVarScheme &threadVars() noexcept
{
    return libraryScheme;
}

int32_t ThreadVarScheme::initialize(int32_t *slot) noexcept
{
    if (slot == nullptr) {
        TOLLAN_ASSERT_FAILED("slot != NULL", kModule, "InitializeZORThreadVar");
        return 0;
    }
    if (!indexAllocated_.load()) {
        platform::TlsIndex index = 0;
        if (!platform::tlsAlloc(&index)) {
            setStartupFailure();
            return 0;
        }
        index_.store(index);
        indexAllocated_.store(true);
    }
    *slot = nextSlot_++;
    ++users_;
    return 1;
}

void **ThreadVarScheme::block(const char *function) noexcept
{
    if (!indexAllocated_.load(std::memory_order_acquire)) return nullptr;
    auto **cells = static_cast<void **>(platform::tlsGet(index_.load(std::memory_order_relaxed)));
    if (cells != nullptr) return cells;
    cells = static_cast<void **>(allocThreadData(kCells * sizeof(void *)));
    if (cells == nullptr) return nullptr;
    if (!platform::tlsSet(index_.load(std::memory_order_relaxed), cells)) {
        TOLLAN_LOG(ZOR_LOG_WARNING, kModule, function, "Could not store the thread's variable block");
        freeThreadData(cells);
        return nullptr;
    }
    // The block has to be freed when this thread ends.
    platform::armThreadExit();
    return cells;
}

void *ThreadVarScheme::get(int32_t slot) noexcept
{
    const bool valid = inRange(slot);
    if (!valid) logBogusSlot("GetZORThreadVarValue");
    void **cells = block("GetZORThreadVarValue");
    return cells != nullptr && valid ? cells[slot - 1] : nullptr;
}

void ThreadVarScheme::set(int32_t slot, void *value) noexcept
{
    void **cells = block("SetZORThreadVarValue");
    if (!inRange(slot)) {
        logBogusSlot("SetZORThreadVarValue");
        return;
    }
    if (cells != nullptr) cells[slot - 1] = value;
}

void ThreadVarScheme::uninitialize(int32_t slot) noexcept
{
    if (!inRange(slot)) {
        TOLLAN_LOG(ZOR_LOG_ERROR, kModule, "UninitializeZORThreadVar",
                   "Bogus thread local storage slot passed to UninitializeZORThreadVar");
        return;
    }
    if (users_ == 0)
        TOLLAN_LOG(ZOR_LOG_ERROR, kModule, "UninitializeZORThreadVar",
                   "UnitializeZORThreadVar called too many times");
    --users_;
    if (users_ == 0 && indexAllocated_.load()) {
        freeThreadBlock();
        indexAllocated_.store(false);
        platform::tlsFree(index_.load());
        nextSlot_ = 1;
    }
}

bool ThreadVarScheme::threadHasBlock() const noexcept
{
    return indexAllocated_.load(std::memory_order_acquire) &&
           platform::tlsGet(index_.load(std::memory_order_relaxed)) != nullptr;
}

void ThreadVarScheme::freeThreadBlock() noexcept
{
    if (!indexAllocated_.load(std::memory_order_acquire)) return;
    freeThreadData(platform::tlsGet(index_.load(std::memory_order_relaxed)));
    platform::tlsSet(index_.load(std::memory_order_relaxed), nullptr);
}

void *allocThreadData(size_t bytes) noexcept
{
    return allocateZeroedBlock(bytes);
}

void freeThreadData(void *block) noexcept
{
    freeBlock(block);
}

bool threadHasBlock() noexcept
{
    return libraryScheme.threadHasBlock();
}

}  // namespace tollan::services
