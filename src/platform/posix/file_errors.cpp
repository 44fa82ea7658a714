#include "platform/posix/file_errors.h"

#include <cerrno>

#include "platform/file.h"

namespace tollan::platform {
namespace {

struct ErrnoMapping {
    int errorNumber;
    FileError error;
};

constexpr ErrnoMapping kTable[] = {
    {ENOENT, FileError::notFound},
    {ENOTDIR, FileError::notFound},
    {EACCES, FileError::accessDenied},
    {EPERM, FileError::accessDenied},
    {EROFS, FileError::accessDenied},
    // CreateFileA refuses directories and busy executables with "access denied".
    {EISDIR, FileError::accessDenied},
    {ETXTBSY, FileError::accessDenied},
    {EBUSY, FileError::accessDenied},
    {ENOSPC, FileError::diskFull},
    {EDQUOT, FileError::diskFull},
    {EFBIG, FileError::diskFull},
    {ENAMETOOLONG, FileError::nameTooLong},
    {EBADF, FileError::badHandle},
    {EEXIST, FileError::exists},
    {EINVAL, FileError::invalidArgument},
    {EOVERFLOW, FileError::invalidArgument},
    {ESPIPE, FileError::invalidArgument},
    {ENOMEM, FileError::noMemory},
    {EMFILE, FileError::tooManyFiles},
    {ENFILE, FileError::tooManyFiles},
};

}  // namespace

FileError fileErrorFromErrno(int errorNumber) noexcept
{
    for (const ErrnoMapping &row : kTable) {
        if (row.errorNumber == errorNumber) return row.error;
    }
    return FileError::general;
}

}  // namespace tollan::platform
