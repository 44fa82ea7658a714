// The bytes an Fmt call produces before they reach the target, and the bytes
// a Scan call reads when its source is not a string in memory. Short results
// stay in the record itself; longer ones move to the library's heap.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tollan::fmtio {

class ByteBuffer {
public:
    ByteBuffer() noexcept = default;
    ~ByteBuffer() noexcept;
    ByteBuffer(const ByteBuffer &) = delete;
    ByteBuffer &operator=(const ByteBuffer &) = delete;

    // Each append either stores all its bytes or none, and then leaves the
    // buffer failed (no memory): later appends are ignored.
    void append(const char *bytes, size_t count) noexcept;
    void append(char byte) noexcept { append(&byte, 1); }
    void fill(char byte, size_t count) noexcept;

    const char *data() const noexcept { return bytes_; }
    size_t size() const noexcept { return size_; }
    bool failed() const noexcept { return failed_; }
    void clear() noexcept { size_ = 0; }

private:
    bool reserve(size_t more) noexcept;

    static constexpr size_t kInline = 256;
    char inline_[kInline];
    char *bytes_ = inline_;
    size_t size_ = 0;
    size_t capacity_ = kInline;
    bool failed_ = false;
};

}  // namespace tollan::fmtio
