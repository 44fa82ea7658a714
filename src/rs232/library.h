// The serial library's place in the start-up chain.
#pragma once

namespace tollan::rs232 {

// Start-up: the library lock, the per-thread error slot, the run-state
// callback that closes every port when the program stops. False when the
// slot cannot be had.
bool QXRS232Initialize() noexcept;
// Shutdown: closes every port, frees the records, the slot and the state.
void QXRS232Shutdown() noexcept;
// Thread detach: frees the thread's error record.
void QXRS232ThreadCleanup() noexcept;

}  // namespace tollan::rs232
