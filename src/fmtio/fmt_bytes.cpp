#include "fmtio/fmt_bytes.h"

#include <cstring>

#include "services/memory.h"

namespace tollan::fmtio {

ByteBuffer::~ByteBuffer() noexcept
{
    if (bytes_ != inline_) services::freeBlock(bytes_);
}

bool ByteBuffer::reserve(size_t more) noexcept
{
    if (failed_) return false;
    if (capacity_ - size_ >= more) return true;
    if (more > SIZE_MAX / 2 - size_) return failed_ = true, false;
    size_t capacity = capacity_ * 2;
    if (capacity < size_ + more) capacity = size_ + more;
    char *bytes;
    if (bytes_ == inline_) {
        bytes = static_cast<char *>(services::allocateBlock(capacity));
        if (bytes) std::memcpy(bytes, inline_, size_);
    } else {
        bytes = static_cast<char *>(services::resizeBlock(bytes_, capacity));
    }
    if (!bytes) return failed_ = true, false;
    bytes_ = bytes;
    capacity_ = capacity;
    return true;
}

void ByteBuffer::append(const char *bytes, size_t count) noexcept
{
    if (count == 0 || !reserve(count)) return;
    std::memcpy(bytes_ + size_, bytes, count);
    size_ += count;
}

void ByteBuffer::fill(char byte, size_t count) noexcept
{
    if (count == 0 || !reserve(count)) return;
    std::memset(bytes_ + size_, byte, count);
    size_ += count;
}

}  // namespace tollan::fmtio
