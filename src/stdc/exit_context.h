// The exit resumption context: the register context that start-up records
// last (WMain), so that an exit requested while start-up is still running
// returns there, with the exit code as start-up's result, instead of ending
// the process from inside the loader. The context is valid only while the
// frame that recorded it runs: armed when recorded, disarmed when that frame
// returns.
#pragma once

#include <csetjmp>

namespace tollan::stdc {

// The buffer WMain records the context in with setjmp.
std::jmp_buf &exitResumptionContext() noexcept;
void armExitResumption() noexcept;
void disarmExitResumption() noexcept;
// Returns to the recorded context with `exitCode` (never 0) while it is armed;
// otherwise returns false and the caller ends the process as usual.
bool resumeAtExitContext(int exitCode) noexcept;

}  // namespace tollan::stdc
