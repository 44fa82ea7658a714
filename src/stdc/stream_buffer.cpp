#include "stdc/stream_buffer.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/file.h"
#include "stdc/descriptors.h"

namespace tollan::stdc {
namespace {

int descriptorOf(const Stream &stream) noexcept
{
    return static_cast<int>(stream.descriptor);
}

bool canWrite(Stream &stream) noexcept
{
    if ((stream.mode & mode::kWrite) != 0) return true;
    stream.state |= state::kError;
    setErrno(EINVAL);
    return false;
}

// Leaves reading for writing: the descriptor goes back to where the
// program stands, so the bytes it did not read are written over.
bool stopReading(Stream &stream) noexcept
{
    if ((stream.state & state::kReadData) == 0 && stream.pushedCount == 0) return true;
    const int64_t unread = unreadBytes(stream);
    dropReadData(stream);
    if (unread > 0 && seekDescriptor(descriptorOf(stream), -unread, 1) < 0) {
        stream.state |= state::kError;
        return false;
    }
    return true;
}

// Puts the buffer in writing mode with all its room free.
bool startWriting(Stream &stream) noexcept
{
    if (!canWrite(stream) || !stopReading(stream)) return false;
    ensureBuffer(stream);
    if ((stream.state & state::kWriteData) == 0) {
        stream.position = stream.bufferStart;
        stream.writeEnd = stream.bufferEnd;
        stream.state |= state::kWriteData;
    }
    return true;
}

// Flushes when the stream's rule asks for it after `last` was put.
int flushIfDue(Stream &stream, const char *first, const char *last) noexcept
{
    if ((stream.state & state::kUnbuffered) != 0) return flushStream(stream);
    if ((stream.state & state::kLineBuffered) != 0 &&
        std::memchr(first, '\n', static_cast<size_t>(last - first)))
        return flushStream(stream);
    return 0;
}

}  // namespace

uint32_t lowFlagsOf(const Stream &stream) noexcept
{
    uint32_t flags = 0;
    if ((stream.mode & mode::kBinary) != 0) flags |= lowflag::kBinary;
    if ((stream.mode & mode::kAppend) != 0) flags |= lowflag::kAppend;
    return flags;
}

void ensureBuffer(Stream &stream) noexcept
{
    if (stream.bufferStart != nullptr) return;
    auto *buffer = static_cast<char *>(std::malloc(kBufferSize));
    if (buffer == nullptr) {
        useBuffer(stream, &stream.oneByte, 1);
        return;
    }
    useBuffer(stream, buffer, kBufferSize);
    stream.state |= state::kOwnsBuffer;
}

int64_t fillBuffer(Stream &stream) noexcept
{
    if ((stream.state & state::kEndOfFile) != 0) return -1;
    if ((stream.mode & mode::kRead) == 0 || (stream.state & state::kWriteData) != 0) {
        stream.state |= state::kError;
        setErrno(EINVAL);
        return -1;
    }
    ensureBuffer(stream);
    const int64_t got =
        readDescriptor(descriptorOf(stream), stream.bufferStart,
                       static_cast<size_t>(stream.bufferEnd - stream.bufferStart), lowFlagsOf(stream));
    stream.position = stream.readEnd = stream.bufferStart;
    stream.state &= ~state::kReadData;
    if (got < 0) {
        stream.state |= state::kError;
        return -1;
    }
    if (got == 0) {
        stream.state |= state::kEndOfFile;
        return -1;
    }
    stream.readEnd = stream.bufferStart + got;
    stream.state |= state::kReadData;
    return got;
}

int flushStream(Stream &stream) noexcept
{
    if ((stream.state & state::kWriteData) == 0) return 0;
    uint32_t flags = 0;
    // A stream of fdopen whose descriptor was closed under it has nowhere to go.
    if ((stream.mode & mode::kFromDescriptor) != 0 && !descriptorFlags(descriptorOf(stream), &flags))
        return 0;
    const char *next = stream.bufferStart;
    int result = 0;
    while (next < stream.position) {
        const int64_t put = writeDescriptor(descriptorOf(stream), next,
                                            static_cast<size_t>(stream.position - next), lowFlagsOf(stream));
        if (put <= 0) {
            if (put == 0) setErrno(EIO);
            stream.state |= state::kError;
            result = -1;
            break;
        }
        next += put;
    }
    if (result == 0 && commitDescriptor(descriptorOf(stream)) != 0) {
        stream.state |= state::kError;
        result = -1;
    }
    stream.position = stream.writeEnd = stream.readEnd = stream.bufferStart;
    stream.state &= ~state::kWriteData;
    return result;
}

void dropReadData(Stream &stream) noexcept
{
    stream.pushedCount = 0;
    stream.position = stream.readEnd = stream.savedReadEnd = stream.bufferStart;
    stream.state &= ~state::kReadData;
}

int64_t unreadBytes(const Stream &stream) noexcept
{
    int64_t unread = static_cast<unsigned char>(stream.pushedCount);
    if ((stream.state & state::kReadData) != 0) {
        const char *end = stream.pushedCount > 0 ? stream.savedReadEnd : stream.readEnd;
        unread += end - stream.position;
        if ((stream.mode & mode::kBinary) == 0 && stream.descriptor >= kFirstDescriptor)
            unread += static_cast<int64_t>(countNewlines(stream.position, end));
    }
    return unread;
}

int getByteSlow(Stream &stream) noexcept
{
    if (stream.pushedCount > 0) {
        const int byte = stream.pushedBack[--stream.pushedCount];
        if (stream.pushedCount == 0) stream.readEnd = stream.savedReadEnd;
        return byte;
    }
    if (fillBuffer(stream) < 0) return -1;
    return static_cast<unsigned char>(*stream.position++);
}

void pushBack(Stream &stream, unsigned char byte) noexcept
{
    if (stream.pushedCount == 0) {
        stream.savedReadEnd = stream.readEnd;
        stream.readEnd = stream.position;
    }
    stream.pushedBack[stream.pushedCount++] = byte;
}

int putByteSlow(Stream &stream, unsigned char byte) noexcept
{
    if (!startWriting(stream)) return -1;
    if (stream.position >= stream.writeEnd && flushStream(stream) != 0) return -1;
    if (!startWriting(stream)) return -1;
    char *at = stream.position;
    *stream.position++ = static_cast<char>(byte);
    if (flushIfDue(stream, at, stream.position) != 0) return -1;
    return byte;
}

size_t writeBytes(Stream &stream, const char *bytes, size_t count) noexcept
{
    if (count == 0 || !startWriting(stream)) return 0;
    if ((stream.state & state::kUnbuffered) != 0) {
        // What an earlier call left, then the whole piece in one write, so
        // that a printf to stdout reaches the terminal (and the debugger) whole.
        if (flushStream(stream) != 0) return 0;
        const int64_t put = writeDescriptor(static_cast<int>(stream.descriptor), bytes, count, lowFlagsOf(stream));
        if (put == static_cast<int64_t>(count)) return count;
        if (put == 0) setErrno(EIO);
        stream.state |= state::kError;
        return put > 0 ? static_cast<size_t>(put) : 0;
    }
    const size_t size = static_cast<size_t>(stream.bufferEnd - stream.bufferStart);
    const bool plain = (stream.state & state::kLineBuffered) == 0;
    // The bytes of this call known to have left, or to sit in a buffer that
    // will not be flushed within this call.
    size_t safe = 0;
    size_t done = 0;
    while (done < count) {
        if (plain && stream.position == stream.bufferStart && count - done >= size) {
            // A piece at least as large as the buffer goes straight out.
            const size_t piece = (count - done) / size * size;
            const int64_t put =
                writeDescriptor(static_cast<int>(stream.descriptor), bytes + done, piece, lowFlagsOf(stream));
            if (put <= 0) {
                if (put == 0) setErrno(EIO);
                stream.state |= state::kError;
                return done;
            }
            done += static_cast<size_t>(put);
            safe = done;
            continue;
        }
        const size_t piece = std::min(static_cast<size_t>(stream.writeEnd - stream.position), count - done);
        std::memcpy(stream.position, bytes + done, piece);
        stream.position += piece;
        done += piece;
        if (stream.position == stream.writeEnd) {
            if (flushStream(stream) != 0 || !startWriting(stream)) return safe;
            safe = done;
        }
    }
    return flushIfDue(stream, bytes, bytes + count) == 0 ? count : safe;
}

int closeStream(Stream &stream) noexcept
{
    int result = 0;
    if ((stream.state & state::kOwnsBuffer) != 0) std::free(stream.bufferStart);
    stream.bufferStart = stream.bufferEnd = stream.position = nullptr;
    stream.readEnd = stream.writeEnd = stream.savedReadEnd = nullptr;
    const int descriptor = descriptorOf(stream);
    uint32_t flags = 0;
    const bool fromDescriptor = (stream.mode & mode::kFromDescriptor) != 0;
    if (descriptor >= 0 && (!fromDescriptor || descriptorFlags(descriptor, &flags)) &&
        descriptor >= kFirstDescriptor && closeDescriptor(descriptor) != 0)
        result = -1;
    if (stream.temporaryName != nullptr) {
        platform::removeFile(stream.temporaryName);
        std::free(stream.temporaryName);
        stream.temporaryName = nullptr;
    }
    stream.descriptor = -1;
    stream.pushedCount = 0;
    stream.mode = 0;
    stream.state &= state::kHasLock;
    return result;
}

}  // namespace tollan::stdc
