// The C library's process-wide locks, which keep its shared state whole
// under asynchronous callbacks and several threads: the locale and code page,
// the time library's shared results, the environment, and the exit-time
// table. InitAsyncAndMTProtection makes them at start-up; shutdown releases
// them in the same order.
#pragma once

#include <cstdint>

#include "platform/lock.h"

namespace tollan::stdc {

enum class SharedLock : uint8_t { locale, time, environment, exit, count };

// Makes the four locks in order; false as soon as one cannot be made (those
// made before stay, for releaseSharedLocks).
bool createSharedLocks() noexcept;
// Releases the locks that exist, in the order they were made.
void releaseSharedLocks() noexcept;
// A lock; null outside the time between the two calls above.
platform::RecursiveLock *sharedLock(SharedLock which) noexcept;

}  // namespace tollan::stdc
