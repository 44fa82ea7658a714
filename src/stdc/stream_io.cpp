// Reading and writing bytes, blocks and lines.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include <tollan/ansi_c.h>

#include "stdc/descriptors.h"
#include "stdc/stream.h"
#include "stdc/stream_buffer.h"

using namespace tollan::stdc;

namespace {

// size x count, or false (errno 22) when the product overflows.
bool totalBytes(size_t size, size_t count, size_t *total) noexcept
{
    if (size != 0 && count > SIZE_MAX / size) {
        setErrno(EINVAL);
        return false;
    }
    *total = size * count;
    return true;
}

// The rest of a large binary read, straight into the caller's memory.
size_t readDirect(Stream &stream, char *target, size_t count) noexcept
{
    size_t done = 0;
    while (done < count) {
        const size_t piece = std::min<size_t>(count - done, 2147483647u);
        const int64_t got =
            readDescriptor(static_cast<int>(stream.descriptor), target + done, piece, lowFlagsOf(stream));
        if (got < 0) {
            stream.state |= state::kError;
            break;
        }
        if (got == 0) {
            stream.state |= state::kEndOfFile;
            break;
        }
        done += static_cast<size_t>(got);
    }
    return done;
}

size_t readBytes(Stream &stream, char *target, size_t count) noexcept
{
    size_t done = 0;
    while (done < count && stream.pushedCount > 0) target[done++] = static_cast<char>(getByteSlow(stream));
    while (done < count) {
        const size_t ready = static_cast<size_t>(std::max<ptrdiff_t>(stream.readEnd - stream.position, 0));
        if (ready > 0) {
            const size_t piece = std::min(ready, count - done);
            std::memcpy(target + done, stream.position, piece);
            stream.position += piece;
            done += piece;
            continue;
        }
        const size_t size = stream.bufferStart != nullptr
                                ? static_cast<size_t>(stream.bufferEnd - stream.bufferStart)
                                : kBufferSize;
        if ((stream.mode & mode::kBinary) != 0 && count - done > 2 * size &&
            (stream.mode & mode::kRead) != 0 && (stream.state & (state::kWriteData | state::kEndOfFile)) == 0)
            return done + readDirect(stream, target + done, count - done);
        if (fillBuffer(stream) < 0) break;
    }
    return done;
}

int putText(Stream &stream, const char *text) noexcept
{
    const size_t length = std::strlen(text);
    return writeBytes(stream, text, length) == length ? 0 : TOLLAN_EOF;
}

}  // namespace

size_t tollan_fread(void *buffer, size_t size, size_t count, TollanFILE *candidate) noexcept
{
    StreamAccess stream(candidate);
    size_t total = 0;
    if (!stream || !totalBytes(size, count, &total) || total == 0) return 0;
    if (buffer == nullptr) {
        setErrno(EINVAL);
        return 0;
    }
    return readBytes(*stream, static_cast<char *>(buffer), total) / size;
}

size_t tollan_fwrite(const void *bytes, size_t size, size_t count, TollanFILE *candidate) noexcept
{
    StreamAccess stream(candidate);
    size_t total = 0;
    if (!stream || !totalBytes(size, count, &total) || total == 0) return 0;
    if (bytes == nullptr) {
        setErrno(EINVAL);
        return 0;
    }
    return writeBytes(*stream, static_cast<const char *>(bytes), total) / size;
}

int tollan_fgetc(TollanFILE *candidate) noexcept
{
    StreamAccess stream(candidate);
    return stream ? getByte(*stream) : TOLLAN_EOF;
}

int tollan_getc(TollanFILE *stream) noexcept
{
    return tollan_fgetc(stream);
}

int tollan_getchar(void) noexcept
{
    return tollan_fgetc(tollan_stdin);
}

char *tollan_fgets(char *buffer, int n, TollanFILE *candidate) noexcept
{
    StreamAccess stream(candidate);
    if (!stream) return nullptr;
    if (buffer == nullptr || n < 2) {
        setErrno(EINVAL);
        return nullptr;
    }
    int used = 0;
    while (used < n - 1) {
        const int byte = getByte(*stream);
        if (byte < 0) break;
        buffer[used++] = static_cast<char>(byte);
        if (byte == '\n') break;
    }
    if (used == 0) return nullptr;
    buffer[used] = '\0';
    return buffer;
}

char *tollan_gets(char *buffer) noexcept
{
    StreamAccess stream(tollan_stdin);
    if (!stream) return nullptr;
    if (buffer == nullptr) {
        setErrno(EINVAL);
        return nullptr;
    }
    size_t used = 0;
    int byte = 0;
    while ((byte = getByte(*stream)) >= 0 && byte != '\n') buffer[used++] = static_cast<char>(byte);
    if (byte < 0 && used == 0) return nullptr;
    buffer[used] = '\0';
    return buffer;
}

int tollan_fputc(int byte, TollanFILE *candidate) noexcept
{
    StreamAccess stream(candidate);
    return stream ? putByte(*stream, static_cast<unsigned char>(byte)) : TOLLAN_EOF;
}

int tollan_putc(int byte, TollanFILE *stream) noexcept
{
    return tollan_fputc(byte, stream);
}

int tollan_putchar(int byte) noexcept
{
    return tollan_fputc(byte, tollan_stdout);
}

int tollan_fputs(const char *text, TollanFILE *candidate) noexcept
{
    StreamAccess stream(candidate);
    if (!stream) return TOLLAN_EOF;
    if (text == nullptr) {
        setErrno(EINVAL);
        return TOLLAN_EOF;
    }
    return putText(*stream, text);
}

int tollan_puts(const char *text) noexcept
{
    StreamAccess stream(tollan_stdout);
    if (!stream) return TOLLAN_EOF;
    if (text == nullptr) {
        setErrno(EINVAL);
        return TOLLAN_EOF;
    }
    // One write of text and newline, so an unbuffered stdout sends a line whole.
    char line[256];
    const size_t length = std::strlen(text);
    if (length < sizeof line) {
        std::copy_n(text, length, line);
        line[length] = '\n';
        return writeBytes(*stream, line, length + 1) == length + 1 ? 0 : TOLLAN_EOF;
    }
    if (putText(*stream, text) != 0) return TOLLAN_EOF;
    return putByte(*stream, '\n') < 0 ? TOLLAN_EOF : 0;
}

int tollan_ungetc(int byte, TollanFILE *candidate) noexcept
{
    StreamAccess stream(candidate);
    if (!stream) return TOLLAN_EOF;
    if (byte == TOLLAN_EOF || (stream->mode & mode::kRead) == 0 || (stream->state & state::kWriteData) != 0) {
        setErrno(EINVAL);
        return TOLLAN_EOF;
    }
    if (stream->pushedCount == kPushBackLimit) {
        setErrno(ENOMEM);
        return TOLLAN_EOF;
    }
    pushBack(*stream, static_cast<unsigned char>(byte));
    stream->state &= ~state::kEndOfFile;
    return static_cast<unsigned char>(byte);
}
