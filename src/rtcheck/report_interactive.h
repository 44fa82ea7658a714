// The interactive report: a report that no error file takes goes to the
// remote target's host, to the debugger watching the process, or to the
// developer, and their choice is carried out.
#pragma once

#include <cstdint>

#include "rtcheck/report_position.h"

namespace tollan::rtcheck {

// Shows text at severity (1 to 3; above 3 counts as fatal) and returns when
// the program is to go on: after the host or the debugger let the thread go,
// or when the developer chose to break or to ignore. A choice to terminate
// ends the process with status -1.
void reportInteractively(int32_t severity, const char *text, const SourcePosition &position) noexcept;

}  // namespace tollan::rtcheck
