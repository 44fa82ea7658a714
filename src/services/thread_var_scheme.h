// The thread-variable scheme behind InitializeZORThreadVar and friends: one
// platform thread-local index whose value is, per thread, a block of eight
// pointer-sized cells. The library uses one instance; tests make their own.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/tls.h"

namespace tollan::services {

class ThreadVarScheme {
public:
    static constexpr int32_t kCells = 8;

    // On first use obtains the index; 0 (and the start-up failure flag) when
    // none is left. Otherwise hands out the next slot number (not checked
    // against kCells) and counts one more user; 1.
    int32_t initialize(int32_t *slot) noexcept;
    // The calling thread's cell; creates the thread's block when it has none.
    // Null for a slot outside 1..8 (logged), before the index exists, or when
    // the block cannot be allocated.
    void *get(int32_t slot) noexcept;
    // Stores value in the calling thread's cell, creating the block first.
    // A slot outside 1..8 is logged and ignored.
    void set(int32_t slot, void *value) noexcept;
    // Releases one user. The last release frees the calling thread's block and
    // the index, and numbering starts again from 1. The user count is 8 bits
    // wide: a release too many wraps it to 255 and the scheme then never ends.
    void uninitialize(int32_t slot) noexcept;

    bool threadHasBlock() const noexcept;
    // Frees the calling thread's block of cells (not what the cells point to).
    void freeThreadBlock() noexcept;

    bool indexAllocated() const noexcept { return indexAllocated_.load(std::memory_order_acquire); }
    int32_t nextSlot() const noexcept { return nextSlot_; }
    uint8_t users() const noexcept { return users_; }

private:
    void **block(const char *function) noexcept;

    // Changed only at start-up and shutdown, but read by every thread, also by
    // threads still running while the process goes down.
    std::atomic<platform::TlsIndex> index_{0};
    std::atomic<bool> indexAllocated_{false};
    int32_t nextSlot_ = 1;
    uint8_t users_ = 0;
};

// The library's scheme.
ThreadVarScheme &threadVars() noexcept;

}  // namespace tollan::services
