// Files on POSIX: open(2) and friends through the system-call table,
// retried on EINTR.
#include "platform/file.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

#include "platform/posix/file_errors.h"
#include "platform/posix/system_calls.h"

namespace tollan::platform {
using posix::sys;

namespace {

int descriptor(NativeFile file) noexcept
{
    return static_cast<int>(file);
}

FileError lastError() noexcept
{
    return fileErrorFromErrno(errno);
}

// The error of a read or write that failed. The system refuses a read of a
// descriptor opened write-only, and a write of one opened read-only, with
// EBADF, as it refuses a closed one; Windows calls the first two "access
// denied". The descriptor's access mode, as it was opened, tells them apart.
FileError transferError(int fd, int neededAccess) noexcept
{
    if (errno != EBADF) return lastError();
    const int flags = sys().fcntl(fd, F_GETFL, 0);
    if (flags < 0) return FileError::badHandle;
    const int access = flags & O_ACCMODE;
    return access == O_RDWR || access == neededAccess ? FileError::badHandle : FileError::accessDenied;
}

int openFlags(const FileOpenRequest &request) noexcept
{
    int flags = O_CLOEXEC;
    if (request.read && request.write)
        flags |= O_RDWR;
    else if (request.write)
        flags |= O_WRONLY;
    else
        flags |= O_RDONLY;
    // CREATE_ALWAYS, CREATE_NEW, OPEN_ALWAYS, TRUNCATE_EXISTING and
    // OPEN_EXISTING come down to these three bits here.
    if (request.create) flags |= O_CREAT;
    if (request.create && request.exclusive) flags |= O_EXCL;
    if (request.truncate) flags |= O_TRUNC;
    return flags;
}

// Sharing has no equivalent: POSIX locks are advisory, and every opener here
// may read and write as if the file were opened for shared access.
void applyHints(int fd, const FileOpenRequest &request) noexcept
{
    if (request.sequential) posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
    if (request.randomAccess) posix_fadvise(fd, 0, 0, POSIX_FADV_RANDOM);
}

}  // namespace

bool lastOpenFailureText(char *, size_t) noexcept
{
    return false;
}

FileError openFile(const char *path, const FileOpenRequest &request, NativeFile *file) noexcept
{
    int fd;
    do {
        fd = sys().open(path, openFlags(request), request.readOnlyWhenCreated ? 0444 : 0666);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) return lastError();

    // A directory opens read-only here; CreateFileA refuses it.
    struct stat status {};
    if (sys().fstat(fd, &status) != 0 || S_ISDIR(status.st_mode)) {
        const FileError error = S_ISDIR(status.st_mode) ? FileError::accessDenied : lastError();
        sys().close(fd);
        return error;
    }
    applyHints(fd, request);
    if (request.deleteOnClose) sys().unlink(path);
    *file = fd;
    return FileError::none;
}

FileError readFile(NativeFile file, void *buffer, uint32_t count, uint32_t *bytesRead) noexcept
{
    ssize_t got;
    do {
        got = sys().read(descriptor(file), buffer, count);
    } while (got < 0 && errno == EINTR);
    if (got < 0) return transferError(descriptor(file), O_RDONLY);
    *bytesRead = static_cast<uint32_t>(got);
    return FileError::none;
}

FileError writeFile(NativeFile file, const void *buffer, uint32_t count) noexcept
{
    const char *next = static_cast<const char *>(buffer);
    uint32_t left = count;
    while (left > 0) {
        const ssize_t put = sys().write(descriptor(file), next, left);
        if (put < 0) {
            if (errno == EINTR) continue;
            return transferError(descriptor(file), O_WRONLY);
        }
        // A write that takes nothing and reports no error would repeat forever.
        if (put == 0) return FileError::general;
        next += put;
        left -= static_cast<uint32_t>(put);
    }
    return FileError::none;
}

FileError seekFile(NativeFile file, int64_t offset, SeekOrigin origin, int64_t *position) noexcept
{
    static_assert(sizeof(off_t) == 8, "large file support is required");
    const int whence = origin == SeekOrigin::begin     ? SEEK_SET
                       : origin == SeekOrigin::current ? SEEK_CUR
                                                       : SEEK_END;
    const off_t result = sys().lseek(descriptor(file), static_cast<off_t>(offset), whence);
    if (result < 0) return lastError();
    *position = result;
    return FileError::none;
}

FileError flushFile(NativeFile file) noexcept
{
    int result;
    do {
        result = sys().fsync(descriptor(file));
    } while (result != 0 && errno == EINTR);
    // EINVAL and EROFS: a special file that has no synchronisation.
    if (result != 0 && errno != EINVAL && errno != EROFS) return lastError();
    return FileError::none;
}

FileError closeFile(NativeFile file) noexcept
{
    // Linux releases the descriptor even when close reports EINTR: never retry.
    if (sys().close(descriptor(file)) != 0 && errno != EINTR) return lastError();
    return FileError::none;
}

NativeFile standardFile(int which) noexcept
{
    if (which < 0 || which > 2 || sys().fcntl(which, F_GETFD, 0) < 0) return kNoFile;
    return which;
}

bool standardFilesUseCrLf() noexcept
{
    return false;
}

FileError removeFile(const char *path) noexcept
{
    struct stat status {};
    // unlink(2) would say EISDIR (or EPERM); DeleteFileA says access denied.
    if (sys().stat(path, &status) == 0 && S_ISDIR(status.st_mode)) return FileError::accessDenied;
    if (sys().unlink(path) != 0) return lastError();
    return FileError::none;
}

FileError renameFile(const char *from, const char *to) noexcept
{
    if (sys().renameNoReplace(from, to) != 0) return lastError();
    return FileError::none;
}

size_t temporaryDirectory(char *buffer, size_t size) noexcept
{
    const char *folder = std::getenv("TMPDIR");
    if (folder == nullptr || folder[0] != '/') folder = "/tmp";
    size_t length = std::strlen(folder);
    while (length > 1 && folder[length - 1] == '/') --length;
    const bool addSeparator = folder[length - 1] != '/';
    if (length + (addSeparator ? 2 : 1) > size) return 0;
    std::memcpy(buffer, folder, length);
    if (addSeparator) buffer[length++] = '/';
    buffer[length] = '\0';
    return length;
}

bool isDiskFile(NativeFile file) noexcept
{
    struct stat status {};
    return sys().fstat(descriptor(file), &status) == 0 && S_ISREG(status.st_mode);
}

FileError queryFileSize(const char *path, bool *exists, int64_t *size) noexcept
{
    struct stat status {};
    if (sys().stat(path, &status) != 0) {
        if (errno != ENOENT && errno != ENOTDIR) return lastError();
        *exists = false;
        *size = 0;
        return FileError::none;
    }
    *exists = true;
    *size = S_ISDIR(status.st_mode) ? 0 : static_cast<int64_t>(status.st_size);
    return FileError::none;
}

}  // namespace tollan::platform
