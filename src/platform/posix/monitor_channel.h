// The channel between a program and tollan-monitor on POSIX: the Windows
// debugger's facilities, carried over a Unix-domain stream socket named after
// the debug-output pipe. The monitor listens; the program connects once for
// its debug output and event texts, and once more for each break. The
// standard I/O pipe is a socket of its own that carries records of the same
// format (platform/standard_io_pipe.h).
//
// A record is one kind byte, a 32-bit length (little-endian) and that many
// bytes of payload:
//   'O'  a debug event text (OutputDebugStringA); the monitor answers 'k'
//        once it has handled the text, and the program waits for that.
//   'P'  debug output written to the debug-output pipe; no answer.
//   'B'  a break, on a connection of its own: BreakRecord; the monitor
//        answers 'r' when it resumes the thread.
//   '1'  on the standard I/O pipe: the bytes of one write to standard
//        output; no answer.
//   '2'  likewise for standard error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tollan::platform::posix {

inline constexpr char kRecordText = 'O';
inline constexpr char kRecordOutput = 'P';
inline constexpr char kRecordBreak = 'B';
inline constexpr char kRecordStandardOutput = '1';
inline constexpr char kRecordStandardError = '2';
inline constexpr char kAnswerTaken = 'k';
inline constexpr char kAnswerResume = 'r';

struct BreakRecord {
    uint64_t threadId;
    uint64_t threadRecord;  // the thread's ZORThreadEnv in the program; 0 for none
};

// The socket path of the named pipe `pipeName` ("\\.\pipe\NAME" or NAME):
// NAME with '/' and '\' as '_' in the per-user directory
// ($XDG_RUNTIME_DIR/tollan, else /tmp/tollan-<uid>). Empty when it does not
// fit a socket address.
std::string pipeSocketPath(const char *pipeName);
// Makes the per-user directory (mode 0700) when it is missing; false when it
// cannot be had or belongs to someone else.
bool makePipeDirectory() noexcept;

// Sends one record; false when the connection failed.
bool sendRecord(int fd, char kind, const void *payload, size_t length) noexcept;
// Reads exactly `length` bytes, retrying on EINTR; false at end or on error.
bool readExactly(int fd, void *buffer, size_t length) noexcept;
// A connection to the socket at `path`; -1 when nobody listens there.
int connectTo(const std::string &path) noexcept;

}  // namespace tollan::platform::posix
