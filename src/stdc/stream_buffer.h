// The buffer engine under every stream call: allocating, filling, flushing
// and the slow halves of reading and writing a byte.
#pragma once

#include <cstdint>

#include "stdc/stream.h"

namespace tollan::stdc {

// The low-level flags a stream's mode asks of every read and write.
uint32_t lowFlagsOf(const Stream &stream) noexcept;

// Gives a stream without a buffer its 512 bytes, or the one-byte buffer
// when memory cannot be had.
void ensureBuffer(Stream &stream) noexcept;

// Refills the buffer: the bytes now readable, or -1 (end of file, or the
// error flag with errno).
int64_t fillBuffer(Stream &stream) noexcept;

// Writes out the unwritten data and commits the descriptor: 0, or -1 with
// the error flag set.
int flushStream(Stream &stream) noexcept;

// Forgets buffered read data and pushed-back bytes.
void dropReadData(Stream &stream) noexcept;

// The bytes of read data and pushed-back bytes not yet taken, as the file
// counts them (text mode: a newline stood for CR LF).
int64_t unreadBytes(const Stream &stream) noexcept;

// The slow halves of getc and putc: -1 (EOF) on failure.
int getByteSlow(Stream &stream) noexcept;
int putByteSlow(Stream &stream, unsigned char byte) noexcept;

// The quick halves, inline for the hot loops of the calls.
inline int getByte(Stream &stream) noexcept
{
    if (stream.position < stream.readEnd) return static_cast<unsigned char>(*stream.position++);
    return getByteSlow(stream);
}

inline int putByte(Stream &stream, unsigned char byte) noexcept
{
    if (stream.position < stream.writeEnd &&
        (stream.state & (state::kUnbuffered | state::kLineBuffered)) == 0) {
        *stream.position++ = static_cast<char>(byte);
        return byte;
    }
    return putByteSlow(stream, byte);
}

// Pushes a byte back (ungetc's stack, last pushed read first); the caller
// has checked that there is room.
void pushBack(Stream &stream, unsigned char byte) noexcept;

// Writes count bytes through the buffer with the stream's flushing rule
// (unbuffered: at the end; line buffered: at the end when the bytes hold a
// newline). The
// bytes taken; fewer on failure.
size_t writeBytes(Stream &stream, const char *bytes, size_t count) noexcept;

// Releases the buffer, closes the descriptor, removes a temporary file and
// marks the record free; the caller has flushed. 0 or -1.
int closeStream(Stream &stream) noexcept;

}  // namespace tollan::stdc
