// The text of one log line or message: a stack array holds the usual short
// text, the heap is used only for a longer one. Nothing here throws: when
// memory runs out the text is cut where it stood.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include <tollan/export.h>

namespace tollan::logger {

class LineBuffer {
public:
    LineBuffer() noexcept { stack_[0] = '\0'; }
    LineBuffer(const LineBuffer &) = delete;
    LineBuffer &operator=(const LineBuffer &) = delete;

    // The text, always followed by a terminating zero.
    const char *data() const noexcept { return data_; }
    size_t size() const noexcept { return size_; }

    void append(const char *text, size_t length) noexcept
    {
        // Lines are built from many short pieces: the common case stays inline.
        if (length <= capacity_ - size_) {
            std::memcpy(data_ + size_, text, length);
            size_ += length;
            data_[size_] = '\0';
        } else {
            appendGrowing(text, length);
        }
    }
    // A null text appends nothing.
    void append(const char *text) noexcept;
    void append(char c) noexcept { append(&c, 1); }
    void appendDecimal(int64_t value) noexcept;
    // Appends value as exactly `digits` decimal digits with leading zeros.
    void appendZeroPadded(uint32_t value, int digits) noexcept;
    // printf's rules, with %p printed as on Windows (services/text_format.h);
    // a null format appends nothing.
    void appendFormatted(const char *format, va_list args) noexcept TOLLAN_PRINTF(2, 0);
    // Replaces the first occurrence of pattern; false when there is none.
    bool replaceFirst(const char *pattern, const char *replacement) noexcept;
    // Cuts the text to at most length characters.
    void truncate(size_t length) noexcept;

private:
    void appendGrowing(const char *text, size_t length) noexcept;
    // Makes room for `length` characters plus the terminator; false when the
    // memory cannot be had.
    bool reserve(size_t length) noexcept;

    static constexpr size_t kStackSize = 2048;
    char stack_[kStackSize];
    std::unique_ptr<char[]> heap_;
    char *data_ = stack_;
    size_t size_ = 0;
    size_t capacity_ = kStackSize - 1;  // characters, without the terminator
};

}  // namespace tollan::logger
