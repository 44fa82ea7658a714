#include "platform/posix/file_errors.h"

#include <cerrno>

#include "platform/file.h"

namespace tollan::platform {
namespace {

struct ErrnoMapping {
    int errorNumber;
    int32_t ioError;
};

constexpr ErrnoMapping kTable[] = {
    {ENOENT, ioerror::kFileNotFound},
    {ENOTDIR, ioerror::kFileNotFound},
    {EACCES, ioerror::kAccessDenied},
    {EPERM, ioerror::kAccessDenied},
    {EROFS, ioerror::kAccessDenied},
    // CreateFileA refuses directories and busy executables with "access denied".
    {EISDIR, ioerror::kAccessDenied},
    {ETXTBSY, ioerror::kAccessDenied},
    {EBUSY, ioerror::kAccessDenied},
    {ENOSPC, ioerror::kDiskFull},
    {EDQUOT, ioerror::kDiskFull},
    {EFBIG, ioerror::kDiskFull},
    {ENAMETOOLONG, ioerror::kNameTooLong},
    {EBADF, ioerror::kBadHandle},
    {EEXIST, ioerror::kFileExists},
    {EINVAL, ioerror::kInvalidArgument},
    {EOVERFLOW, ioerror::kInvalidArgument},
    {ESPIPE, ioerror::kInvalidArgument},
    {ENOMEM, ioerror::kNoMemory},
    {EMFILE, ioerror::kTooManyFiles},
    {ENFILE, ioerror::kTooManyFiles},
};

}  // namespace

int32_t ioErrorFromErrno(int errorNumber) noexcept
{
    for (const ErrnoMapping &row : kTable) {
        if (row.errorNumber == errorNumber) return row.ioError;
    }
    return ioerror::kGeneral;
}

}  // namespace tollan::platform
