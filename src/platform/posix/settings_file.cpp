#include "platform/posix/settings_file.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace tollan::platform::posix {

namespace {

constexpr int32_t kErrorAccessDenied = 5;
constexpr int32_t kErrorDiskFull = 112;
constexpr int32_t kErrorIoFailed = 1016;

int32_t errorFromErrno(int error)
{
    if (error == EACCES || error == EPERM || error == EROFS) return kErrorAccessDenied;
    if (error == ENOSPC || error == EDQUOT) return kErrorDiskFull;
    return kErrorIoFailed;
}

// Closes a descriptor when it goes out of scope.
class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor()
    {
        if (fd_ >= 0) close(fd_);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int get() const { return fd_; }

private:
    int fd_;
};

std::string directoryOf(const std::string &path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// mkdir -p with mode 0700 for the directories it creates.
bool makeDirectories(const std::string &directory)
{
    struct stat info {};
    if (stat(directory.c_str(), &info) == 0) return S_ISDIR(info.st_mode);
    const std::string parent = directoryOf(directory);
    if (parent != directory && !makeDirectories(parent)) return false;
    return mkdir(directory.c_str(), 0700) == 0 || errno == EEXIST;
}

bool writeAll(int fd, const std::string &text)
{
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = write(fd, text.data() + done, text.size() - done);
        if (written < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        done += static_cast<size_t>(written);
    }
    return true;
}

// Writes `text` to a temporary file beside `path`, with the mode of the file
// it replaces, and renames it over `path`.
int32_t replaceFile(const std::string &path, const std::string &text)
{
    const std::string temporary = path + ".tmp." + std::to_string(getpid());
    struct stat original {};
    const mode_t mode = stat(path.c_str(), &original) == 0 ? (original.st_mode & 07777) : 0600;
    {
        Descriptor file(open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
        if (file.get() < 0) return errorFromErrno(errno);
        if (fchmod(file.get(), mode) != 0 || !writeAll(file.get(), text) || fsync(file.get()) != 0) {
            const int error = errno;
            unlink(temporary.c_str());
            return errorFromErrno(error);
        }
    }
    if (rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno;
        unlink(temporary.c_str());
        return errorFromErrno(error);
    }
    Descriptor directory(open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.get() >= 0) fsync(directory.get());  // makes the rename itself durable
    return 0;
}

}  // namespace

std::string settingsFilePath()
{
    if (const char *explicitPath = std::getenv("TOLLAN_REGISTRY"); explicitPath && *explicitPath)
        return explicitPath;
    if (const char *config = std::getenv("XDG_CONFIG_HOME"); config && *config == '/')
        return std::string(config) + "/tollan/registry.reg";
    const char *home = std::getenv("HOME");
    if (!home || !*home) {
        const passwd *user = getpwuid(getuid());
        home = user ? user->pw_dir : nullptr;
    }
    if (!home || !*home) return {};
    return std::string(home) + "/.config/tollan/registry.reg";
}

int32_t loadSettings(const std::string &path, SettingsDocument *document)
{
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0) {
        if (errno != ENOENT) return errorFromErrno(errno);
        *document = SettingsDocument::parse({});
        return 0;
    }
    std::string text;
    char chunk[8192];
    for (;;) {
        const ssize_t got = read(file.get(), chunk, sizeof chunk);
        if (got < 0) {
            if (errno == EINTR) continue;
            return errorFromErrno(errno);
        }
        if (got == 0) break;
        text.append(chunk, static_cast<size_t>(got));
    }
    *document = SettingsDocument::parse(text);
    return 0;
}

int32_t updateSettings(const std::string &path, const std::function<bool(SettingsDocument &)> &change)
{
    if (!makeDirectories(directoryOf(path))) return errorFromErrno(errno);
    Descriptor lock(open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (lock.get() < 0) return errorFromErrno(errno);
    while (flock(lock.get(), LOCK_EX) != 0) {
        if (errno != EINTR) return errorFromErrno(errno);
    }
    // The lock goes with the descriptor; it is released when `lock` closes.
    SettingsDocument document;
    if (const int32_t error = loadSettings(path, &document)) return error;
    if (!change(document)) return 0;
    return replaceFile(path, document.serialize());
}

}  // namespace tollan::platform::posix
