#include "link_objects.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/event.h"
#include "platform/posix/monitor_channel.h"
#include "platform/standard_io_pipe.h"

namespace tollan::monitor {
namespace {

constexpr char kSharedInfo[] = "Vantrel - ZOR DBG Shared Info";
constexpr char kDebugOutputPipe[] = "\\\\.\\pipe\\Vantrel - ZOR Pipe for Debugging Output";
constexpr char kDebugStarted[] = "Vantrel - ZOR DBG Event To Signal Debug Started";

}  // namespace

std::unique_ptr<ListeningSocket> ListeningSocket::open(const std::string &path, std::string *error)
{
    sockaddr_un address{};
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        *error = "the socket path '" + path + "' is too long";
        return nullptr;
    }
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        *error = std::string("no socket: ") + std::strerror(errno);
        return nullptr;
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    // A file left by a monitor that was killed: the pid is ours now. One
    // that still answers belongs to a monitor serving the program already.
    if (const int other = platform::posix::connectTo(path); other >= 0) {
        close(other);
        close(fd);
        *error = "another monitor listens at '" + path + "'";
        return nullptr;
    }
    unlink(path.c_str());
    if (bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 || listen(fd, 16) != 0) {
        *error = "cannot listen at '" + path + "': " + std::strerror(errno);
        close(fd);
        return nullptr;
    }
    return std::unique_ptr<ListeningSocket>(new ListeningSocket(fd, path));
}

ListeningSocket::~ListeningSocket()
{
    close(fd_);
    unlink(path_.c_str());
}

std::string linkObjectName(const char *base, pid_t pid)
{
    char number[16];
    std::snprintf(number, sizeof number, "%x", static_cast<unsigned>(pid));
    return std::string(base) + number;
}

bool makeLinkObjects(pid_t pid, LinkObjects *objects, std::string *error)
{
    LinkObjects made;
    const std::string blockName = linkObjectName(kSharedInfo, pid);
    made.sharedInfo = platform::SharedMemory::create(blockName.c_str(), kSharedInfoSize);
    if (made.sharedInfo == nullptr) {
        *error = "cannot make the shared block '" + blockName + "'";
        return false;
    }
    auto *block = static_cast<unsigned char *>(made.sharedInfo->data());
    block[kProtocolLevelOffset] = static_cast<unsigned char>(kProtocolLevel & 0xFF);
    block[kProtocolLevelOffset + 1] = static_cast<unsigned char>(kProtocolLevel >> 8);

    if (!platform::posix::makePipeDirectory()) {
        *error = "cannot make the directory for the pipes";
        return false;
    }
    made.debugOutput = ListeningSocket::open(
        platform::posix::pipeSocketPath(linkObjectName(kDebugOutputPipe, pid).c_str()), error);
    if (made.debugOutput == nullptr) return false;
    char standardIOPipe[platform::kStandardIoPipeNameSize];
    platform::standardIoPipeName(static_cast<uint32_t>(pid), standardIOPipe);
    made.standardIO = ListeningSocket::open(platform::posix::pipeSocketPath(standardIOPipe), error);
    if (made.standardIO == nullptr) return false;
    *objects = std::move(made);
    return true;
}

bool signalDebugStarted(std::string *error)
{
    const std::unique_ptr<platform::Event> started = platform::Event::create(false, false, kDebugStarted);
    if (started == nullptr) {
        *error = std::string("cannot open the event '") + kDebugStarted + "'";
        return false;
    }
    started->set();
    return true;
}

}  // namespace tollan::monitor
