// Files of the formatting library: open, read, write, seek, flush, close and a
// size query, with failures reported as the library's I/O error codes.
#pragma once

#include <cstdint>

namespace tollan::platform {

// The formatting library's I/O error codes (GetFmtIOError).
namespace ioerror {
inline constexpr int32_t kNone = 0;
inline constexpr int32_t kFileNotFound = 1;
inline constexpr int32_t kGeneral = 2;
inline constexpr int32_t kBadHandle = 3;
inline constexpr int32_t kNoMemory = 4;
inline constexpr int32_t kFileExists = 5;
inline constexpr int32_t kAccessDenied = 6;
inline constexpr int32_t kInvalidArgument = 7;
inline constexpr int32_t kTooManyFiles = 8;
inline constexpr int32_t kDiskFull = 9;
inline constexpr int32_t kNameTooLong = 10;
inline constexpr int32_t kStringTooLong = 11;
}  // namespace ioerror

// A HANDLE on Windows, a descriptor elsewhere; both fit 64 bits.
using NativeFile = intptr_t;
inline constexpr NativeFile kNoFile = -1;

struct FileOpenRequest {
    bool read = false;
    bool write = false;
    // Cut an existing file to length 0.
    bool truncate = false;
    // Make the file when it does not exist; without it a missing file fails.
    bool create = false;
};

enum class SeekOrigin { begin = 0, current = 1, end = 2 };

// Every function below returns 0 on success or an I/O error code, and
// changes none of its out arguments on failure.

// Opens path for the access and disposition of request, shared for reading
// and writing with other openers. Directories cannot be opened.
int32_t openFile(const char *path, const FileOpenRequest &request, NativeFile *file) noexcept;

// Reads at most count bytes (one system read, like ReadFile); *bytesRead 0
// means end of file. A pipe whose writer has gone reads as end of file.
int32_t readFile(NativeFile file, void *buffer, uint32_t count, uint32_t *bytesRead) noexcept;

// Writes all count bytes, continuing after partial writes.
int32_t writeFile(NativeFile file, const void *buffer, uint32_t count) noexcept;

// Moves the file position; *position receives the new one.
int32_t seekFile(NativeFile file, int64_t offset, SeekOrigin origin, int64_t *position) noexcept;

// Commits the file's written data to the device. Files that cannot be
// synchronised (terminals, pipes on POSIX) have nothing to commit and succeed.
int32_t flushFile(NativeFile file) noexcept;

int32_t closeFile(NativeFile file) noexcept;

// True for a file on a disk (GetFileType's FILE_TYPE_DISK; a regular file on
// POSIX): only such files are positioned at their end before appending.
bool isDiskFile(NativeFile file) noexcept;

// Asks the file system about path. A path that names nothing succeeds with
// *exists false and *size 0; a directory exists with size 0.
int32_t queryFileSize(const char *path, bool *exists, int64_t *size) noexcept;

}  // namespace tollan::platform
