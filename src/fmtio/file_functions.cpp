// The exported file functions: argument checks, then the file's own lock for
// the whole operation.
#include <cstdint>

#include <tollan/fmtio.h>

#include "fmtio/io_error.h"
#include "fmtio/file_access.h"
#include "fmtio/file_table.h"
#include "services/path_check.h"
#include "fmtio/thread_state.h"

using namespace tollan::fmtio;
namespace ioerror = tollan::fmtio::ioerror;

namespace {

// The open flags of ZOR_OpenFile's arguments; false when one is out of range.
bool openFlagsFor(int32_t action, int32_t mode, int32_t type, uint32_t *flags) noexcept
{
    switch (action) {
        case 0:
            *flags = openflag::kRead | openflag::kWrite;
            break;
        case 1:
            *flags = openflag::kRead;
            break;
        case 2:
            *flags = openflag::kWrite;
            break;
        default:
            return false;
    }
    if (type != 0 && type != 1) return false;
    if (type == 0) *flags |= openflag::kBinary;
    const bool writing = (*flags & openflag::kWrite) != 0;
    if (writing) *flags |= openflag::kCreate;
    switch (mode) {
        case 0:
            *flags |= writing ? openflag::kTruncate : 0;
            break;
        case 1:
            *flags |= writing ? openflag::kAppend : 0;
            break;
        case 2:
            break;
        default:
            return false;
    }
    return true;
}

bool validCount(int64_t count) noexcept
{
    return count >= 0 && count <= INT32_MAX;
}

}  // namespace

int32_t ZOR_OpenFile(const char *path, int32_t action, int32_t mode, int32_t type) noexcept
{
    if (const int32_t error = ioErrorOf(tollan::services::checkPath(path)); error != ioerror::kNone)
        return failWith(error);
    uint32_t flags = 0;
    if (!openFlagsFor(action, mode, type, &flags)) return failWith(ioerror::kInvalidArgument);
    tollan::services::GatePass pass(fileTableGate());
    if (!pass) return failWith(kNotAvailable);

    tollan::platform::FileOpenRequest request;
    request.read = (flags & openflag::kRead) != 0;
    request.write = (flags & openflag::kWrite) != 0;
    request.truncate = (flags & openflag::kTruncate) != 0;
    request.create = (flags & openflag::kCreate) != 0;
    tollan::platform::NativeFile osFile;
    if (const int32_t error = ioErrorOf(tollan::platform::openFile(path, request, &osFile));
        error != ioerror::kNone)
        return failWith(error);

    const int32_t handle = attachFile(osFile, flags, path);
    if (handle < 0) {
        tollan::platform::closeFile(osFile);
        return failWith(ioerror::kNoMemory);
    }
    setIoError(ioerror::kNone);
    return handle;
}

int32_t ZOR_ReadFile(int32_t handle, void *buffer, int64_t count) noexcept
{
    if (handle == 1 || handle == 2) return failWith(ioerror::kBadHandle);
    if (!validCount(count) || (buffer == nullptr && count > 0)) return failWith(ioerror::kInvalidArgument);
    LockedFile file(handle);
    if (!file) return failWith(ioerror::kBadHandle);
    uint32_t got = 0;
    if (const int32_t error =
            readData(*file, static_cast<char *>(buffer), static_cast<uint32_t>(count), &got);
        error != ioerror::kNone)
        return failWith(error);
    setIoError(ioerror::kNone);
    return static_cast<int32_t>(got);
}

int32_t ZOR_WriteFile(int32_t handle, const void *buffer, int64_t count) noexcept
{
    if (handle == 0) return failWith(ioerror::kBadHandle);
    if (!validCount(count) || (buffer == nullptr && count > 0)) return failWith(ioerror::kInvalidArgument);
    LockedFile file(handle);
    if (!file) return failWith(ioerror::kBadHandle);
    if (const int32_t error =
            writeData(*file, static_cast<const char *>(buffer), static_cast<uint32_t>(count), false);
        error != ioerror::kNone)
        return failWith(error);
    setIoError(ioerror::kNone);
    return static_cast<int32_t>(count);
}

int32_t ZOR_CloseFile(int32_t handle) noexcept
{
    LockedFile file(handle);
    if (!file) return failWith(ioerror::kBadHandle);
    if (const int32_t error = closeLockedFile(file); error != ioerror::kNone) return failWith(error);
    setIoError(ioerror::kNone);
    return 0;
}

int64_t SetFilePtr(int32_t handle, int64_t offset, int32_t origin) noexcept
{
    // The standard streams' numbers are accepted and stay where they are.
    if (handle < kFirstHandle) {
        setIoError(ioerror::kNone);
        return 0;
    }
    LockedFile file(handle);
    if (!file) return failWith(ioerror::kBadHandle);
    if (origin < 0 || origin > 2) return failWith(ioerror::kInvalidArgument);
    int64_t position = 0;
    if (const int32_t error =
            seekData(*file, offset, static_cast<tollan::platform::SeekOrigin>(origin), &position);
        error != ioerror::kNone)
        return failWith(error);
    setIoError(ioerror::kNone);
    return position;
}

int32_t GetFileInfo(const char *path, int64_t *size) noexcept
{
    if (const int32_t error = ioErrorOf(tollan::services::checkPath(path)); error != ioerror::kNone)
        return failWith(error);
    bool exists = false;
    int64_t fileSize = 0;
    if (const int32_t error = ioErrorOf(tollan::platform::queryFileSize(path, &exists, &fileSize));
        error != ioerror::kNone)
        return failWith(error);
    if (size != nullptr) *size = fileSize;
    setIoError(ioerror::kNone);
    return exists ? 1 : 0;
}

int32_t ZOR_SetCommitMode(int32_t commit) noexcept
{
    if (commit != 0 && commit != 1) return -1;
    setCommitMode(commit == 1);
    return 0;
}
