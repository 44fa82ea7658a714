// Resource tracking's table as the rest of the debugger link sees it.
#pragma once

namespace tollan::debugger {

// At the end of a run, while the debugger watches: "resources_final_tally"
// with the table's address, so that the debugger reads what is still held.
void reportFinalTally() noexcept;
struct RuntimeRecord;

// Frees every entry and the bucket array (the owner of the run-time record,
// at shutdown, once the record is no longer published). The table's lock
// stays: a thread may still be waiting for it.
void releaseResourceTable(RuntimeRecord &runtime) noexcept;

}  // namespace tollan::debugger
