// A recursive lock: CRITICAL_SECTION on Windows, a recursive pthread mutex elsewhere.
#pragma once

#include <cstddef>

namespace tollan::platform {

class RecursiveLock {
public:
    RecursiveLock() noexcept;
    ~RecursiveLock();
    RecursiveLock(const RecursiveLock &) = delete;
    RecursiveLock &operator=(const RecursiveLock &) = delete;

    void lock() noexcept;
    bool try_lock() noexcept;
    void unlock() noexcept;

private:
    // Room for the native object, so that no system header leaks out of the backend.
    alignas(16) unsigned char native_[64];
};

}  // namespace tollan::platform
