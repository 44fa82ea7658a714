// Flushing, positioning, buffering and the state flags of streams.
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <mutex>

#include <tollan/ansi_c.h>

#include "platform/c_errno.h"
#include "stdc/descriptors.h"
#include "stdc/stream.h"
#include "stdc/stream_buffer.h"

using namespace tollan::stdc;

namespace {

bool isStandardInput(const Stream &stream) noexcept
{
    return &stream == standardStream(0);
}

// Where the program stands in the file: the descriptor's position less what
// is buffered but unread, plus what is written but not flushed. -1 on failure.
int64_t logicalPosition(Stream &stream) noexcept
{
    const int64_t system = seekDescriptor(static_cast<int>(stream.descriptor), 0, 1);
    if (system < 0) return -1;
    int64_t position = system - unreadBytes(stream);
    if ((stream.state & state::kWriteData) != 0) {
        position += stream.position - stream.bufferStart;
        if ((stream.mode & mode::kBinary) == 0 && stream.descriptor >= kFirstDescriptor)
            position += static_cast<int64_t>(countNewlines(stream.bufferStart, stream.position));
    }
    return position < 0 ? 0 : position;
}

int seekLocked(Stream &stream, int64_t offset, int whence) noexcept
{
    if (whence < 0 || whence > 2 || (whence == 0 && offset < 0)) {
        setErrno(EINVAL);
        return -1;
    }
    if (flushStream(stream) != 0) return -1;
    if (whence == 1) offset -= unreadBytes(stream);
    dropReadData(stream);
    stream.state &= ~state::kEndOfFile;
    if (seekDescriptor(static_cast<int>(stream.descriptor), offset, whence) < 0) return -1;
    return 0;
}

}  // namespace

int *tollan_errno(void) noexcept
{
    return tollan::platform::cErrnoLocation();
}

TollanFILE *tollan_standard_stream(int which) noexcept
{
    if (which < 0 || which > 2) return nullptr;
    return reinterpret_cast<TollanFILE *>(standardStream(which));
}

int tollan_fflush(TollanFILE *candidate) noexcept
{
    if (candidate == nullptr) {
        std::lock_guard hold(tableLock());
        int result = 0;
        for (int slot = 0; slot < kStreamSlots; ++slot) {
            Stream *record = streamInSlot(slot);
            if (record == nullptr) continue;
            StreamAccess stream(record);
            if (stream && (stream->mode & mode::kWrite) != 0 && flushStream(*stream) != 0)
                result = TOLLAN_EOF;
        }
        return result;
    }
    StreamAccess stream(candidate);
    if (!stream) return TOLLAN_EOF;
    if (isStandardInput(*stream)) {
        dropReadData(*stream);
        return 0;
    }
    return flushStream(*stream) == 0 ? 0 : TOLLAN_EOF;
}

int tollan_fseek(TollanFILE *candidate, long offset, int whence) noexcept
{
    StreamAccess stream(candidate);
    if (!stream) return -1;
    return seekLocked(*stream, offset, whence);
}

long tollan_ftell(TollanFILE *candidate) noexcept
{
    StreamAccess stream(candidate);
    if (!stream) return -1;
    return static_cast<long>(logicalPosition(*stream));
}

int tollan_fgetpos(TollanFILE *candidate, tollan_fpos_t *position) noexcept
{
    StreamAccess stream(candidate);
    if (!stream) return -1;
    if (position == nullptr) {
        setErrno(EINVAL);
        return -1;
    }
    const int64_t here = logicalPosition(*stream);
    if (here < 0) return -1;
    *position = here;
    return 0;
}

int tollan_fsetpos(TollanFILE *candidate, const tollan_fpos_t *position) noexcept
{
    StreamAccess stream(candidate);
    if (!stream) return -1;
    if (position == nullptr) {
        setErrno(EINVAL);
        return -1;
    }
    return seekLocked(*stream, *position, 0);
}

void tollan_rewind(TollanFILE *candidate) noexcept
{
    StreamAccess stream(candidate);
    if (!stream) return;
    // The error flag stays: a program that checks ferror after a rewind
    // still learns that something failed before it.
    const uint32_t error = stream->state & state::kError;
    seekLocked(*stream, 0, 0);
    stream->state = (stream->state & ~state::kError) | error;
}

int tollan_setvbuf(TollanFILE *candidate, char *buffer, int type, size_t size) noexcept
{
    StreamAccess stream(candidate);
    if (!stream) return -1;
    if (type < TOLLAN_IONBF || type > TOLLAN_IOFBF ||
        (stream->state & (state::kReadData | state::kWriteData)) != 0 || stream->pushedCount != 0) {
        setErrno(EINVAL);
        return -1;
    }
    char *chosen = &stream->oneByte;
    size_t chosenSize = 1;
    bool owned = false;
    if (size > 0 && buffer != nullptr) {
        chosen = buffer;
        chosenSize = size;
    } else if (size > 0) {
        chosen = static_cast<char *>(std::malloc(size));
        if (chosen == nullptr) {
            setErrno(ENOMEM);
            return -1;
        }
        chosenSize = size;
        owned = true;
    }
    if ((stream->state & state::kOwnsBuffer) != 0) std::free(stream->bufferStart);
    useBuffer(*stream, chosen, chosenSize);
    stream->state &= ~(state::kOwnsBuffer | state::kLineBuffered | state::kUnbuffered);
    if (owned) stream->state |= state::kOwnsBuffer;
    if (type == TOLLAN_IONBF) stream->state |= state::kUnbuffered;
    if (type == TOLLAN_IOLBF) stream->state |= state::kLineBuffered;
    return 0;
}

void tollan_setbuf(TollanFILE *stream, char *buffer) noexcept
{
    if (buffer != nullptr)
        tollan_setvbuf(stream, buffer, TOLLAN_IOFBF, TOLLAN_BUFSIZ);
    else
        tollan_setvbuf(stream, nullptr, TOLLAN_IONBF, 0);
}

int tollan_feof(TollanFILE *candidate) noexcept
{
    StreamAccess stream(candidate);
    return stream && (stream->state & state::kEndOfFile) != 0 ? 1 : 0;
}

int tollan_ferror(TollanFILE *candidate) noexcept
{
    StreamAccess stream(candidate);
    return stream && (stream->state & state::kError) != 0 ? 1 : 0;
}

void tollan_clearerr(TollanFILE *candidate) noexcept
{
    StreamAccess stream(candidate);
    if (stream) stream->state &= ~(state::kEndOfFile | state::kError);
}
