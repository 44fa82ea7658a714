// Files: open, read, write, seek, commit, close, remove, rename and a size
// query. Failures come back as one platform-neutral FileError, which each
// library turns into its own codes (the formatting library's I/O errors, the
// C library's errno); both builds give the same FileError for the same call.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tollan::platform {

// Numbered as the formatting library's I/O errors 0-10, so that the I/O
// column of the Win32 error table serves the Windows backend as it is.
enum class FileError : int32_t {
    none = 0,
    notFound = 1,
    general = 2,
    badHandle = 3,
    noMemory = 4,
    exists = 5,
    accessDenied = 6,
    invalidArgument = 7,
    tooManyFiles = 8,
    diskFull = 9,
    nameTooLong = 10,
};

// A HANDLE on Windows, a descriptor elsewhere; both fit 64 bits.
using NativeFile = intptr_t;
inline constexpr NativeFile kNoFile = -1;

// What other openers may do with a file while it is open. POSIX knows no
// such exclusion: there every file is shared for reading and writing.
enum class FileSharing { readWrite = 0, write = 1, read = 2, none = 3 };

struct FileOpenRequest {
    bool read = false;
    bool write = false;
    // Cut an existing file to length 0.
    bool truncate = false;
    // Make the file when it does not exist; without it a missing file fails.
    bool create = false;
    // With create: fail (FileError::exists) when the file exists already.
    bool exclusive = false;
    FileSharing sharing = FileSharing::readWrite;
    // A file this open creates gets the read-only attribute (POSIX: no write
    // permission bits); an existing file keeps its attributes.
    bool readOnlyWhenCreated = false;
    // The file goes when it is closed (FILE_FLAG_DELETE_ON_CLOSE). POSIX
    // removes its name at once instead, so the open handle is its last trace.
    bool deleteOnClose = false;
    // Access-pattern hints for the system's read-ahead.
    bool sequential = false;
    bool randomAccess = false;
};

enum class SeekOrigin { begin = 0, current = 1, end = 2 };

// Every function below returns FileError::none on success, and
// changes none of its out arguments on failure.

// Opens path for the access and disposition of request, shared for reading
// and writing with other openers. Directories cannot be opened.
FileError openFile(const char *path, const FileOpenRequest &request, NativeFile *file) noexcept;
// The system's own text for why the calling thread's last openFile failed,
// where the system has one beside the error it maps to (Windows: the text of
// CreateFileA's error code). False where it has none (POSIX, whose errno is
// the system's own word) and when the thread's last openFile succeeded.
bool lastOpenFailureText(char *buffer, size_t size) noexcept;

// Reads at most count bytes (one system read, like ReadFile); *bytesRead 0
// means end of file. A pipe whose writer has gone reads as end of file.
FileError readFile(NativeFile file, void *buffer, uint32_t count, uint32_t *bytesRead) noexcept;

// Writes all count bytes, continuing after partial writes.
FileError writeFile(NativeFile file, const void *buffer, uint32_t count) noexcept;

// Moves the file position; *position receives the new one.
FileError seekFile(NativeFile file, int64_t offset, SeekOrigin origin, int64_t *position) noexcept;

// Commits the file's written data to the device. Files that cannot be
// synchronised (terminals, pipes on POSIX) have nothing to commit and succeed.
FileError flushFile(NativeFile file) noexcept;

FileError closeFile(NativeFile file) noexcept;

// True for a file on a disk (GetFileType's FILE_TYPE_DISK; a regular file on
// POSIX): only such files are positioned at their end before appending.
bool isDiskFile(NativeFile file) noexcept;

// The process's standard input (0), output (1) or error (2) handle;
// kNoFile when the process has none (a GUI program, a closed descriptor).
NativeFile standardFile(int which) noexcept;

// Whether text written to or read from the standard handles has CR LF line
// ends: Windows consoles and pipes do; POSIX terminals and pipes end lines
// with LF alone, so the C library's text mode leaves them untouched there.
bool standardFilesUseCrLf() noexcept;

FileError removeFile(const char *path) noexcept;
// Renames (moves) a file; an existing target is not replaced (exists).
FileError renameFile(const char *from, const char *to) noexcept;

// The system's folder for temporary files with its trailing separator
// (GetTempPathA; $TMPDIR or /tmp/ elsewhere), terminated; its length, or 0
// when it does not fit size bytes.
size_t temporaryDirectory(char *buffer, size_t size) noexcept;

// Asks the file system about path. A path that names nothing succeeds with
// *exists false and *size 0; a directory exists with size 0.
FileError queryFileSize(const char *path, bool *exists, int64_t *size) noexcept;

}  // namespace tollan::platform
