// The debug event texts: "@{" name, arguments each behind '|', ':' and the
// length of the head ("@{" and the name), further fields each behind '|',
// "}@". They reach the debugger through the platform's debug output, and only
// while a debugger is present; the thread's last system error survives them.
#pragma once

#include <tollan/debugger.h>
#include <tollan/export.h>

namespace tollan::debugger {

// Formats and sends one text (printf rules, %p as on Windows).
void sendEventText(const char *format, ...) noexcept TOLLAN_PRINTF(1, 2);

// "@{module_attach|...}@" and "@{module_detach|...}@".
void sendModuleAttach(void *module, const ZORDebugTableEntry *table) noexcept;
void sendModuleDetach(void *module) noexcept;
// "@{set_exe_state|into:15}@", on the stepping thread while it steps over
// calls (modes next and over): the debugger then stops in the context the
// thread has switched to.
void tellSteppingIntoNewContext() noexcept;

}  // namespace tollan::debugger
