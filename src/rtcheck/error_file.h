// The process's run-time error file: the stream that reports go to instead
// of the interactive report.
#pragma once

#include <tollan/ansi_c.h>

namespace tollan::rtcheck {

// The stream set by __SetUPErrorFile; null when none is set.
TollanFILE *errorFile() noexcept;

}  // namespace tollan::rtcheck
