// The debugger link's place in the start-up chain.
#pragma once

namespace tollan::debugger {

// WInitApp: the run-time record and thread synchronisation
// (ZORDebugInitialize, with the debugging level from the environment), then
// the debugger's shared block and channel (CdbInitialize).
bool ZORDebugInitialize() noexcept;
bool CdbInitialize() noexcept;
// WMain: the slot of the library's per-thread debugger data.
bool InitExecutionThreadVars() noexcept;

// Shutdown, in the order the chain runs them.
void releaseExecutionThreadVars() noexcept;  // the thread-state slot
void closeDebuggerSide() noexcept;           // WExitApp: tally, leaving, shared block, disconnect
void disconnectChannel() noexcept;           // WExitApp: the debug channel
void releaseExitingThreadState() noexcept;   // WExitApp: the exiting thread's record
void closeThreadSynchronisation() noexcept;  // WExitApp: the run-time record
void freeThreadEnvIndex() noexcept;          // after the async protection: the records' index

// Thread detach: the debugger hears that the thread ends, then its record
// and per-thread data go.
void threadEnds() noexcept;
void releaseThreadState() noexcept;

}  // namespace tollan::debugger
