// Ctrl-C during a transfer. The first asks the transfer to stop at the next
// packet boundary (the progress callback answers it), so that the other end
// hears a cancel and the port is closed in order; the second ends the
// program at once, as Ctrl-C does by default.
#pragma once

namespace tollan::xmodem_tool {

// Catches the first interrupt; with `announce`, says on standard error what
// it does.
void catchInterrupt(bool announce) noexcept;

// Whether an interrupt came.
bool interruptRequested() noexcept;

}  // namespace tollan::xmodem_tool
