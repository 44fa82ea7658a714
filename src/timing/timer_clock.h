// The process-wide seconds clock behind Timer, Delay and SyncWait.
#pragma once

namespace tollan::timing {

// Seconds since the first reading, under the timer lock. A reading that
// would go backwards (the raw clock wrapped) counts one more wrap of
// 4294967.296 s.
double readTimer() noexcept;
// Makes the next reading the new start (the time source changed).
void restartTimer() noexcept;

// Waits until the clock reaches `deadline`, starting from the reading `now`:
// sleeps half the remaining time while more than 0.1 s remain, then spins.
// Never sleeps holding the timer lock.
void waitUntil(double deadline, double now) noexcept;

}  // namespace tollan::timing
