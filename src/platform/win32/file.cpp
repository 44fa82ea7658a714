// Files on Windows: CreateFileA and friends, errors through the one table.
#include "platform/file.h"
#include "platform/system.h"

#include <windows.h>

#include "platform/win32_error_table.h"

namespace tollan::platform {
namespace {

HANDLE handleOf(NativeFile file) noexcept
{
    return reinterpret_cast<HANDLE>(file);
}

FileError lastError() noexcept
{
    return static_cast<FileError>(mapWin32Error(GetLastError()).ioError);
}

// The attributes CREATE_ALWAYS must be given for an existing file: without
// its hidden and system bits the call fails with "access denied".
constexpr DWORD kKeptAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                  FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_TEMPORARY | FILE_ATTRIBUTE_OFFLINE |
                                  FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

// The error of the calling thread's last CreateFileA in openFile.
thread_local DWORD lastOpenFailure = ERROR_SUCCESS;

}  // namespace

FileError openFile(const char *path, const FileOpenRequest &request, NativeFile *file) noexcept
{
    DWORD access = 0;
    if (request.read) access |= GENERIC_READ;
    if (request.write) access |= GENERIC_WRITE;

    DWORD disposition;
    DWORD attributes = request.readOnlyWhenCreated ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL;
    if (!request.create) {
        disposition = request.truncate ? TRUNCATE_EXISTING : OPEN_EXISTING;
    } else if (request.exclusive) {
        disposition = CREATE_NEW;
    } else if (!request.truncate) {
        disposition = OPEN_ALWAYS;
    } else {
        const DWORD existing = GetFileAttributesA(path);
        if (existing == INVALID_FILE_ATTRIBUTES) {
            disposition = CREATE_NEW;
        } else {
            disposition = CREATE_ALWAYS;
            attributes =
                (existing & kKeptAttributes) != 0 ? existing & kKeptAttributes : FILE_ATTRIBUTE_NORMAL;
        }
    }
    if (request.deleteOnClose) attributes |= FILE_FLAG_DELETE_ON_CLOSE;
    if (request.sequential) attributes |= FILE_FLAG_SEQUENTIAL_SCAN;
    if (request.randomAccess) attributes |= FILE_FLAG_RANDOM_ACCESS;

    constexpr DWORD kSharing[] = {FILE_SHARE_READ | FILE_SHARE_WRITE, FILE_SHARE_WRITE, FILE_SHARE_READ, 0};
    const HANDLE handle = CreateFileA(path, access, kSharing[static_cast<int>(request.sharing)], nullptr,
                                      disposition, attributes, nullptr);
    lastOpenFailure = handle == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
    if (handle == INVALID_HANDLE_VALUE) return lastError();
    *file = reinterpret_cast<NativeFile>(handle);
    return FileError::none;
}

bool lastOpenFailureText(char *buffer, size_t size) noexcept
{
    if (lastOpenFailure == ERROR_SUCCESS || size == 0) return false;
    systemErrorText(static_cast<int>(lastOpenFailure), buffer, size);
    return buffer[0] != '\0';
}

FileError readFile(NativeFile file, void *buffer, uint32_t count, uint32_t *bytesRead) noexcept
{
    DWORD got = 0;
    if (!ReadFile(handleOf(file), buffer, count, &got, nullptr)) {
        if (GetLastError() != ERROR_BROKEN_PIPE) return lastError();
        got = 0;
    }
    *bytesRead = got;
    return FileError::none;
}

FileError writeFile(NativeFile file, const void *buffer, uint32_t count) noexcept
{
    const char *next = static_cast<const char *>(buffer);
    uint32_t left = count;
    while (left > 0) {
        DWORD put = 0;
        if (!WriteFile(handleOf(file), next, left, &put, nullptr)) return lastError();
        next += put;
        left -= put;
    }
    return FileError::none;
}

FileError seekFile(NativeFile file, int64_t offset, SeekOrigin origin, int64_t *position) noexcept
{
    const DWORD method = origin == SeekOrigin::begin     ? FILE_BEGIN
                         : origin == SeekOrigin::current ? FILE_CURRENT
                                                         : FILE_END;
    LARGE_INTEGER distance;
    distance.QuadPart = offset;
    LARGE_INTEGER result;
    if (!SetFilePointerEx(handleOf(file), distance, &result, method)) return lastError();
    *position = result.QuadPart;
    return FileError::none;
}

FileError flushFile(NativeFile file) noexcept
{
    if (!FlushFileBuffers(handleOf(file))) return lastError();
    return FileError::none;
}

FileError closeFile(NativeFile file) noexcept
{
    if (!CloseHandle(handleOf(file))) return lastError();
    return FileError::none;
}

NativeFile standardFile(int which) noexcept
{
    constexpr DWORD kHandles[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
    if (which < 0 || which > 2) return kNoFile;
    const HANDLE handle = GetStdHandle(kHandles[which]);
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) return kNoFile;
    return reinterpret_cast<NativeFile>(handle);
}

bool standardFilesUseCrLf() noexcept
{
    return true;
}

FileError removeFile(const char *path) noexcept
{
    if (!DeleteFileA(path)) return lastError();
    return FileError::none;
}

FileError renameFile(const char *from, const char *to) noexcept
{
    if (!MoveFileA(from, to)) return lastError();
    return FileError::none;
}

size_t temporaryDirectory(char *buffer, size_t size) noexcept
{
    const DWORD length = GetTempPathA(static_cast<DWORD>(size), buffer);
    return length == 0 || length >= size ? 0 : length;
}

bool isDiskFile(NativeFile file) noexcept
{
    return GetFileType(handleOf(file)) == FILE_TYPE_DISK;
}

FileError queryFileSize(const char *path, bool *exists, int64_t *size) noexcept
{
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExA(path, GetFileExInfoStandard, &data)) {
        const DWORD error = GetLastError();
        if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND)
            return static_cast<FileError>(mapWin32Error(error).ioError);
        *exists = false;
        *size = 0;
        return FileError::none;
    }
    *exists = true;
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        *size = 0;
    } else {
        *size = static_cast<int64_t>((static_cast<uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow);
    }
    return FileError::none;
}

}  // namespace tollan::platform
