// Names for temporary files (tmpnam), with their two counters.
#pragma once

namespace tollan::stdc {

// Back to the start-up state: both counters 0, the folder and stem unknown.
void resetTemporaryNames() noexcept;

}  // namespace tollan::stdc
