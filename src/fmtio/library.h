// The formatting library's place in the engine's start-up chain.
#pragma once

namespace tollan::fmtio {

// Makes the file table's lock and reserves the per-thread block's cell.
// Running it again once it succeeded does nothing. False: the library is
// unusable (opens fail, the I/O error is kept in one block shared by all
// threads).
bool FmtIOLibInitOnce() noexcept;

// Closes every file still open (committing written data first in commit
// mode), frees the table, the calling thread's block and the cell.
void FmtIOLibCleanup() noexcept;

// Frees the calling thread's block; run at thread detach.
void FmtIOLibThreadCleanup() noexcept;

}  // namespace tollan::fmtio
