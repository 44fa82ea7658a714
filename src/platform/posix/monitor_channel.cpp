#include "platform/posix/monitor_channel.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/posix/system_calls.h"

namespace tollan::platform::posix {
namespace {

constexpr char kPipePrefix[] = "\\\\.\\pipe\\";

std::string pipeDirectory()
{
    const char *runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && *runtime == '/') return std::string(runtime) + "/tollan";
    return "/tmp/tollan-" + std::to_string(getuid());
}

}  // namespace

std::string pipeSocketPath(const char *pipeName)
{
    if (pipeName == nullptr) return {};
    const char *name = pipeName;
    if (std::strncmp(name, kPipePrefix, sizeof kPipePrefix - 1) == 0) name += sizeof kPipePrefix - 1;
    if (*name == '\0') return {};
    std::string path = pipeDirectory() + "/";
    for (const char *c = name; *c != '\0'; ++c) path += (*c == '/' || *c == '\\') ? '_' : *c;
    if (path.size() >= sizeof(sockaddr_un::sun_path)) return {};
    return path;
}

bool makePipeDirectory() noexcept
{
    try {
        const std::string directory = pipeDirectory();
        const size_t slash = directory.rfind('/');
        if (directory.rfind("/tmp/", 0) != 0 && slash != std::string::npos)
            mkdir(directory.substr(0, slash).c_str(), 0700);  // $XDG_RUNTIME_DIR itself normally exists
        if (mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST) return false;
        struct stat info {};
        return lstat(directory.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == getuid() &&
               (info.st_mode & 077) == 0;
    } catch (...) {
        return false;
    }
}

bool sendRecord(int fd, char kind, const void *payload, size_t length) noexcept
{
    unsigned char header[5] = {static_cast<unsigned char>(kind), static_cast<unsigned char>(length),
                               static_cast<unsigned char>(length >> 8),
                               static_cast<unsigned char>(length >> 16),
                               static_cast<unsigned char>(length >> 24)};
    const char *parts[2] = {reinterpret_cast<const char *>(header), static_cast<const char *>(payload)};
    const size_t sizes[2] = {sizeof header, length};
    for (int part = 0; part < 2; ++part) {
        size_t done = 0;
        while (done < sizes[part]) {
            const ssize_t put = sys().send(fd, parts[part] + done, sizes[part] - done, MSG_NOSIGNAL);
            if (put < 0 && errno == EINTR) continue;
            if (put <= 0) return false;
            done += static_cast<size_t>(put);
        }
    }
    return true;
}

bool readExactly(int fd, void *buffer, size_t length) noexcept
{
    size_t done = 0;
    while (done < length) {
        const ssize_t got = sys().read(fd, static_cast<char *>(buffer) + done, length - done);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        done += static_cast<size_t>(got);
    }
    return true;
}

int connectTo(const std::string &path) noexcept
{
    if (path.empty()) return -1;
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return -1;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    int result;
    do {
        result = connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

}  // namespace tollan::platform::posix
