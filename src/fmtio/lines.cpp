// Line I/O on the library's files. Each line is read or written under the
// file's lock, so lines of two threads on one handle never interleave.
#include <algorithm>
#include <cstring>

#include <tollan/fmtio.h>

#include "fmtio/io_error.h"
#include "fmtio/file_access.h"
#include "fmtio/file_table.h"
#include "fmtio/thread_state.h"

using namespace tollan::fmtio;
namespace ioerror = tollan::fmtio::ioerror;

namespace {

constexpr int32_t kEndOfFile = -2;

bool validMaximum(int64_t maximum) noexcept
{
    return maximum >= -1 && maximum <= INT32_MAX;
}

int32_t clampedCount(int64_t count) noexcept
{
    return static_cast<int32_t>(std::min<int64_t>(count, INT32_MAX));
}

}  // namespace

int32_t ReadLine(int32_t handle, char *buffer, int64_t maximum) noexcept
{
    if (!validMaximum(maximum) || buffer == nullptr) return failWith(ioerror::kInvalidArgument);
    LockedFile file(handle);
    if (!file) return failWith(ioerror::kBadHandle);
    setIoError(ioerror::kNone);

    // A disk file is read a block at a time and moved back to just after the
    // line's LF; other files cannot move back and are read byte by byte.
    char block[512];
    const uint32_t blockSize = file->diskFile ? sizeof block : 1;
    const uint64_t room = maximum == -1 ? UINT64_MAX : static_cast<uint64_t>(maximum);
    uint64_t stored = 0;
    int64_t count = 0;
    for (;;) {
        uint32_t got = 0;
        if (const int32_t error = readRaw(*file, block, blockSize, &got); error != ioerror::kNone) {
            buffer[stored] = '\0';
            return failWith(error);
        }
        if (got == 0) {
            buffer[stored] = '\0';
            return stored == 0 ? kEndOfFile : clampedCount(count);
        }
        const char *lineFeed = static_cast<const char *>(std::memchr(block, '\n', got));
        const uint32_t lineBytes = lineFeed != nullptr ? static_cast<uint32_t>(lineFeed - block) : got;
        const uint64_t fitting = std::min<uint64_t>(lineBytes, room - stored);
        std::memcpy(buffer + stored, block, fitting);
        stored += fitting;
        count += lineBytes;
        if (lineFeed == nullptr) continue;

        buffer[stored] = '\0';
        if (const uint32_t beyond = got - lineBytes - 1; beyond > 0) {
            int64_t position;
            if (const int32_t error =
                    seekData(*file, -int64_t{beyond}, tollan::platform::SeekOrigin::current, &position);
                error != ioerror::kNone)
                return failWith(error);
        }
        return clampedCount(count);
    }
}

int32_t WriteLine(int32_t handle, const char *string, int64_t count) noexcept
{
    if (count < -1 || count > INT32_MAX || string == nullptr) return failWith(ioerror::kInvalidArgument);
    LockedFile file(handle);
    if (!file) return failWith(ioerror::kBadHandle);
    const size_t length = count == -1 ? std::strlen(string) : static_cast<size_t>(count);
    if (length > INT32_MAX) return failWith(ioerror::kStringTooLong);
    if (const int32_t error = writeData(*file, string, static_cast<uint32_t>(length), true);
        error != ioerror::kNone)
        return failWith(error);
    setIoError(ioerror::kNone);
    return static_cast<int32_t>(length);
}
