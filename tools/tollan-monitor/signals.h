// The monitor's signals while the program runs. A terminal's interrupt and
// quit reach the whole foreground group, the program included, so the
// monitor ignores them and lets the program decide (as system() does); a
// terminate or hang-up sent to the monitor alone is handed on to the
// program. Either way the monitor ends when the program does, and cleans up.
#pragma once

#include <sys/types.h>

namespace tollan::monitor {

// Saves the dispositions the monitor was started with and installs its own.
void installMonitorSignals() noexcept;
// From now on SIGTERM and SIGHUP go on to `pid`.
void handSignalsTo(pid_t pid) noexcept;
// In the forked child, before exec: the dispositions the monitor was
// started with (an ignored SIGINT stays ignored). Async-signal-safe.
void restoreSignalsInChild() noexcept;

}  // namespace tollan::monitor
