// The standard I/O pipe: the development environment's copy of everything a
// program writes to its standard output and standard error. While the pipe
// is switched on (the debugger link switches it on when the debugger made the
// process's shared block), every low-level write to descriptor 1 or 2 is also
// written to the named pipe "\\.\pipe\Vantrel - ZOR Standard IO Pipe <pid>"
// (the process id in lower-case hexadecimal), which the environment reads.
//
// The client end is opened at the first write and kept for the life of the
// process; when the open fails nothing is kept and the next write tries
// again. What a write to the pipe returns is no concern of the program's:
// nothing is reported, and errno (the last error on Windows) is left as it
// was found.
//
// Windows writes the bytes raw, one synchronous WriteFile per write. POSIX
// has a Unix-domain socket in the pipe's place (docs/platform.md), read by
// tollan-monitor, and one byte stream cannot tell standard output from
// standard error: each write goes as a record of the monitor channel's
// format (platform/posix/monitor_channel.h), tagged with its stream.
//
// Thread-safe: the writes of several threads reach the pipe whole, one after
// another.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tollan::platform {

// Room for the pipe's name with any process id, terminator included.
inline constexpr size_t kStandardIoPipeNameSize = 64;

// The pipe's name for process `processId`: the base name, a space and the id
// in lower-case hexadecimal ("%s %x").
void standardIoPipeName(uint32_t processId, char (&name)[kStandardIoPipeNameSize]) noexcept;

// The library's switch; off until the debugger link turns it on.
void setStandardIoPipe(bool on) noexcept;
bool standardIoPipeOn() noexcept;

// Copies one low-level write of `count` bytes to `descriptor` (1 standard
// output, 2 standard error) to the pipe when the switch is on. Any other
// descriptor, no bytes or the switch off: nothing happens. May wait while a
// live reader does not read (as a write to a full pipe does); a reader that
// went away makes it return at once.
void writeStandardIoPipe(int descriptor, const void *bytes, size_t count) noexcept;

// Shutdown: flushes and closes the pipe when it is open; harmless otherwise.
// A later write (with the switch still on) would open it again.
void closeStandardIoPipe() noexcept;

}  // namespace tollan::platform
