// The monitor's signals while it serves a program.
//
// A program the monitor started (run): a terminal's interrupt and quit reach
// the whole foreground group, the program included, so the monitor ignores
// them and lets the program decide (as system() does); a terminate or
// hang-up sent to the monitor alone is handed on to the program. Either way
// the monitor ends when the program does, and cleans up.
//
// A program the monitor attached to is not the monitor's to stop: no signal
// is ever handed on to it. A terminate or hang-up makes the monitor leave
// the program, which goes on without it. So do interrupt and quit, unless
// the monitor is in the program's process group (the program started it):
// then the terminal's Ctrl-C reached the program as well, and the program
// decides, as above. Interrupt and quit ignored when the monitor started
// (a background job, nohup) stay ignored.
#pragma once

#include <sys/types.h>

namespace tollan::monitor {

// Saves the dispositions the monitor was started with and installs its own
// for a program it runs.
void installMonitorSignals() noexcept;
// From now on SIGTERM and SIGHUP go on to `pid`.
void handSignalsTo(pid_t pid) noexcept;
// In the forked child, before exec: the dispositions the monitor was
// started with (an ignored SIGINT stays ignored). Async-signal-safe.
void restoreSignalsInChild() noexcept;

// Installs the dispositions for an attached program, unblocking the
// signals that a program starting the monitor may have left blocked.
// Returns a descriptor that polls readable once a signal asked the monitor
// to leave; -1 when none could be made (those signals then end the monitor
// as they would any program).
int installAttachSignals(bool sharesProgramGroup) noexcept;
// The first signal that asked the monitor to leave; 0 for none.
int stopSignal() noexcept;

}  // namespace tollan::monitor
