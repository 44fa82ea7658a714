// The platform's debugger facilities. Windows: IsDebuggerPresent,
// OutputDebugStringA, DebugBreak and the debugger's named pipe for debug
// output. POSIX has no such debugger; tollan-monitor plays its part through a
// per-process channel (a Unix-domain socket made from the debug-output pipe's
// name), and a ptrace tracer (gdb) counts as a debugger too:
// - the debugger is present when a tracer is attached or the channel is open;
// - a debug event text goes over the channel, and the sender waits until the
//   monitor has taken it, as a Windows program waits while its debugger
//   handles the event;
// - a break raises SIGTRAP under a tracer, else it stops the calling thread
//   until the monitor resumes it.
// Nothing is made and nothing is sent while no debugger is there.
#pragma once

#include <cstdint>
#include <memory>

namespace tollan::platform {

// IsDebuggerPresent.
bool debuggerPresent() noexcept;
// OutputDebugStringA of a debug event text.
void debugEventText(const char *text) noexcept;
// DebugBreak. threadRecord: the calling thread's record, for the monitor to
// show where it stopped (may be null).
void debugBreak(const void *threadRecord) noexcept;

// The debug-output pipe ("\\.\pipe\<name>"): opened for writing (0), -71 when
// it is open already, -70 when it cannot be opened.
int32_t openDebugOutputPipe(const char *name) noexcept;
// Flushes and closes it; harmless when it is not open.
void closeDebugOutputPipe() noexcept;
bool debugOutputPipeOpen() noexcept;
// Debug output (the logger's location 4): one write to the debug-output pipe
// when it is open, else the system's debug output (Windows) or nothing.
void debugOutput(const char *text) noexcept;

// The development environment started as the debugger of this process.
class StartedDebugger {
public:
    virtual ~StartedDebugger() = default;
    // False once the started program has ended.
    virtual bool running() noexcept = 0;
};

// Starts the program at path as this process's debugger: on Windows with the
// command line "\"<path>\" -p0x<process id in hex>" and the default error
// mode; on POSIX with the arguments {path, "-p0x<process id in hex>"}, and
// leave for it to read this process's memory (a tracer of our choosing under
// Yama). Null when it cannot be started.
std::unique_ptr<StartedDebugger> startDebugger(const char *path) noexcept;

// Dispatches up to `count` window messages waiting for the calling thread
// (Windows); POSIX has none.
void dispatchWindowMessages(int count) noexcept;

// The calling thread's last system error (GetLastError; errno elsewhere),
// kept around calls that talk to the debugger.
uint32_t lastSystemError() noexcept;
void setLastSystemError(uint32_t error) noexcept;

// Calls function(argument); a fault inside it (bad address, illegal
// instruction, arithmetic fault) ends the call instead of the process.
// False when it faulted.
bool callGuarded(void (*function)(void *), void *argument) noexcept;

}  // namespace tollan::platform
