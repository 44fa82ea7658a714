// A library's per-thread record: one cell of the thread-variable scheme,
// holding for each thread a zero-filled record that is made on the thread's
// first use and freed at its exit or at the library's clean-up.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tollan::services {

class ThreadRecordSlot {
public:
    // Obtains the cell; true at once when it is already held. False when the
    // scheme has no thread-local index left.
    bool reserve() noexcept;
    // Frees the calling thread's record and gives the cell back.
    void release() noexcept;
    // The calling thread's record, `bytes` long and zero-filled when made
    // (*made, when given, tells whether this call made it). Null when the
    // cell is not held or the memory cannot be had; the next call tries again.
    void *record(size_t bytes, bool *made = nullptr) noexcept;
    // Frees the calling thread's record; the next use makes a new one.
    void freeRecord() noexcept;
    // Whether the cell is held.
    bool held() const noexcept { return slot_.load(std::memory_order_acquire) != 0; }

private:
    std::atomic<int32_t> slot_{0};  // 0: no cell
};

}  // namespace tollan::services
