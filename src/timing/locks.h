// The utility library's locks. Each is made on first use (UtilityLibraryInitOnce
// makes them all) and lives as long as the process: user threads may still
// read the clock while the library is being shut down.
#pragma once

#include "platform/lock.h"

namespace tollan::timing {

// Guards the Timer state.
platform::RecursiveLock &timerLock() noexcept;
// Guards the table of live timer-engine timers.
platform::RecursiveLock &liveTimersLock() noexcept;
// Serialises DateStr / TimeStr writers of the shared fallback buffer.
platform::RecursiveLock &sharedScratchLock() noexcept;

}  // namespace tollan::timing
