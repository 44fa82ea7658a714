#include "fmtio/io_error.h"
#include "fmtio/file_access.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "services/line_ends.h"

namespace tollan::fmtio {
namespace {

using ioerror::kNone;
using services::dropCarriageReturns;
using services::expandLineFeeds;

bool isText(const FileSlot &file) noexcept
{
    return (file.openFlags & openflag::kBinary) == 0;
}

// Gathers translated bytes and hands them to the system a chunk at a time,
// so that a text write costs one system call per chunk, not per line.
// Short writes (most lines) use a buffer on the stack; long ones a larger
// one from the heap, when there is memory for it.
class ChunkWriter {
public:
    ChunkWriter(platform::NativeFile osFile, size_t expectedBytes) noexcept : osFile_(osFile)
    {
        if (expectedBytes > sizeof local_) {
            heap_.reset(new (std::nothrow) char[kLargeChunk]);
            if (heap_ != nullptr) {
                chunk_ = heap_.get();
                capacity_ = kLargeChunk;
            }
        }
    }

    int32_t put(const char *data, size_t length, bool text) noexcept
    {
        while (length > 0) {
            if (used_ == capacity_) {
                if (const int32_t error = flush(); error != kNone) return error;
            }
            size_t taken;
            if (text) {
                used_ += expandLineFeeds(data, length, chunk_ + used_, capacity_ - used_, &taken);
                if (taken == 0) {
                    // Too little room left for a CR LF pair.
                    if (const int32_t error = flush(); error != kNone) return error;
                }
            } else if (used_ == 0 && length >= capacity_) {
                // Large binary blocks go to the system as they stand.
                if (const int32_t error =
                        ioErrorOf(platform::writeFile(osFile_, data, static_cast<uint32_t>(length)));
                    error != kNone)
                    return error;
                taken = length;
            } else {
                taken = std::min(length, capacity_ - used_);
                std::memcpy(chunk_ + used_, data, taken);
                used_ += taken;
            }
            data += taken;
            length -= taken;
        }
        return kNone;
    }

    int32_t flush() noexcept
    {
        const int32_t error = ioErrorOf(platform::writeFile(osFile_, chunk_, static_cast<uint32_t>(used_)));
        used_ = 0;
        return error;
    }

private:
    static constexpr size_t kLargeChunk = size_t{64} << 10;

    platform::NativeFile osFile_;
    std::unique_ptr<char[]> heap_;
    char local_[2048];
    char *chunk_ = local_;
    size_t capacity_ = sizeof local_;
    size_t used_ = 0;
};

}  // namespace

int32_t readRaw(FileSlot &file, char *buffer, uint32_t count, uint32_t *got) noexcept
{
    if (count == 0 || file.pendingByte < 0)
        return ioErrorOf(platform::readFile(file.osFile, buffer, count, got));

    buffer[0] = static_cast<char>(file.pendingByte);
    file.pendingByte = -1;
    uint32_t more = 0;
    // The byte read ahead is delivered even when the read behind it fails:
    // that failure shows up on the next call.
    if (count > 1 && ioErrorOf(platform::readFile(file.osFile, buffer + 1, count - 1, &more)) != kNone)
        more = 0;
    *got = 1 + more;
    return kNone;
}

int32_t unreadByte(FileSlot &file, char byte) noexcept
{
    if (file.diskFile) {
        int64_t position;
        return ioErrorOf(platform::seekFile(file.osFile, -1, platform::SeekOrigin::current, &position));
    }
    file.pendingByte = static_cast<unsigned char>(byte);
    return kNone;
}

int32_t readData(FileSlot &file, char *buffer, uint32_t count, uint32_t *got) noexcept
{
    uint32_t raw = 0;
    if (const int32_t error = readRaw(file, buffer, count, &raw); error != kNone) return error;
    if (!isText(file) || raw == 0) {
        *got = raw;
        return kNone;
    }

    size_t kept = dropCarriageReturns(buffer, raw);
    if (buffer[kept - 1] == '\r') {
        // The read ended on a CR: whether it is dropped depends on the next
        // byte, so look at it. An LF takes the CR's place; anything else is
        // given back for the next read.
        char next;
        uint32_t peeked = 0;
        if (const int32_t error = readRaw(file, &next, 1, &peeked); error != kNone) return error;
        if (peeked == 1) {
            if (next == '\n')
                buffer[kept - 1] = '\n';
            else if (const int32_t error = unreadByte(file, next); error != kNone)
                return error;
        }
    }
    *got = static_cast<uint32_t>(kept);
    return kNone;
}

int32_t writeData(FileSlot &file, const char *data, uint32_t count, bool newline) noexcept
{
    if (count == 0 && !newline) return kNone;
    if ((file.openFlags & openflag::kAppend) != 0 && file.diskFile) {
        int64_t position;
        if (const int32_t error =
                ioErrorOf(platform::seekFile(file.osFile, 0, platform::SeekOrigin::end, &position));
            error != kNone)
            return error;
    }
    const bool text = isText(file);
    if (!text && !newline) return ioErrorOf(platform::writeFile(file.osFile, data, count));

    // Text may double in size: every byte could be an LF.
    ChunkWriter writer(file.osFile, text ? 2 * size_t{count} + 2 : size_t{count} + 1);
    int32_t error = writer.put(data, count, text);
    if (error == kNone && newline) error = writer.put("\n", 1, text);
    if (error == kNone) error = writer.flush();
    return error;
}

int32_t seekData(FileSlot &file, int64_t offset, platform::SeekOrigin origin, int64_t *position) noexcept
{
    // The system's position is one past the byte read ahead.
    if (origin == platform::SeekOrigin::current && file.pendingByte >= 0) --offset;
    const int32_t error = ioErrorOf(platform::seekFile(file.osFile, offset, origin, position));
    if (error == kNone) file.pendingByte = -1;
    return error;
}

}  // namespace tollan::fmtio
