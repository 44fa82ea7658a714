// The process-wide seconds clock behind Timer, Delay and SyncWait.
#pragma once

#include <cstdint>

namespace tollan::timing {

// Seconds since the first reading, under the timer lock. A reading that
// would go backwards (the raw clock wrapped) counts one more wrap of
// 4294967.296 s.
double readTimer() noexcept;
// Makes the next reading the new start (the time source changed).
void restartTimer() noexcept;

// Waits until the clock reaches `deadline`, starting from the reading `now`:
// sleeps half the remaining time while more than 0.1 s remain, then spins.
// Never sleeps holding the timer lock. An infinite deadline sleeps forever,
// a NaN one returns at once.
void waitUntil(double deadline, double now) noexcept;

// The longest single sleep of a wait; longer waits wake to read the clock.
inline constexpr uint32_t kLongestSleepMs = 24 * 60 * 60 * 1000;
// How long a wait with `remaining` seconds left sleeps before it reads the
// clock again: half of it while more than 0.1 s remain (at most
// kLongestSleepMs), else 0 (the wait spins).
uint32_t sleepSliceMs(double remaining) noexcept;

}  // namespace tollan::timing
