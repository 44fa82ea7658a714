// The utility library's place in the engine's start-up chain.
#pragma once

namespace tollan::timing {

// Chooses the process clock's time source (WInitApp): the plain tick count
// when the setting "useDefaultTimer" is set, else the performance counter,
// else the multimedia timer with its period raised. Resets the Timer clock.
void SetupPCTimer() noexcept;
// Gives back the multimedia timer period that SetupPCTimer raised (WExitApp).
void RestorePCTimer() noexcept;

// Creates the library's locks and reserves the thread slot of the DateStr /
// TimeStr scratch block; false when no slot can be had.
bool UtilityLibraryInitOnce() noexcept;
// Frees the calling thread's scratch block and releases the slot.
void UtilityLibraryCleanup() noexcept;
// Frees the calling thread's scratch block (thread detach).
void UtilityLibraryThreadCleanup() noexcept;
// Registers the run-state callback that discards the program's timers of the
// timer engine when the program stops.
bool RegisterUtilityLibraryRunStateChangeCallback() noexcept;

}  // namespace tollan::timing
