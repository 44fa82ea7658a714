// The debugger's side of one program's debugger link, made before the
// program starts and named after its process id (lower-case hex, no
// separator), as the development environment names them on Windows:
// - the shared information block "Vantrel - ZOR DBG Shared Info<pid>",
//   364 bytes, with the protocol level at byte 340; the library finds the
//   debugger through it and writes its own fields;
// - the debug-output pipe "\\.\pipe\Vantrel - ZOR Pipe for Debugging Output<pid>"
//   and the standard I/O pipe "\\.\pipe\Vantrel - ZOR Standard IO Pipe <pid>",
//   here listening Unix-domain sockets at the paths the library derives from
//   those names.
// Destroying the objects removes the sockets' files and the block's name.
// A program that calls a monitor in while it runs waits for one more object,
// the auto-reset event "Vantrel - ZOR DBG Event To Signal Debug Started"
// (one name for all processes): the monitor sets it once it has made the
// program's objects, and the program then connects.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>

#include "platform/shared_memory.h"

namespace tollan::monitor {

inline constexpr size_t kSharedInfoSize = 364;
inline constexpr size_t kProtocolLevelOffset = 340;
// Level 10 and above: a disconnecting program stops (break reason 35) and
// waits for the debugger's "Debugger Disconnected" event.
inline constexpr uint16_t kProtocolLevel = 10;

// A listening Unix-domain stream socket (non-blocking, close-on-exec) whose
// file is removed with it.
class ListeningSocket {
public:
    // Binds and listens at `path`, replacing a stale file of that name. Null
    // with *error set on failure, or when another monitor listens there.
    static std::unique_ptr<ListeningSocket> open(const std::string &path, std::string *error);
    ~ListeningSocket();
    ListeningSocket(const ListeningSocket &) = delete;
    ListeningSocket &operator=(const ListeningSocket &) = delete;

    int fd() const noexcept { return fd_; }
    const std::string &path() const noexcept { return path_; }

private:
    ListeningSocket(int fd, std::string path) noexcept : fd_(fd), path_(std::move(path)) {}
    int fd_;
    std::string path_;
};

struct LinkObjects {
    std::unique_ptr<platform::SharedMemory> sharedInfo;
    std::unique_ptr<ListeningSocket> debugOutput;
    std::unique_ptr<ListeningSocket> standardIO;
};

// The object name for process `pid`: base text and the pid in lower-case hex.
std::string linkObjectName(const char *base, pid_t pid);

// Makes all three for process `pid`. False with *error when one cannot be
// made; what was made is then undone.
bool makeLinkObjects(pid_t pid, LinkObjects *objects, std::string *error);

// Opens the "Debug Started" event (or makes it, when the program has not
// yet) and sets it. False with *error when it can be neither.
bool signalDebugStarted(std::string *error);

}  // namespace tollan::monitor
