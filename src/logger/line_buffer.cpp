#include "logger/line_buffer.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include "services/text_format.h"

namespace tollan::logger {

bool LineBuffer::reserve(size_t length) noexcept
{
    if (length <= capacity_) return true;
    size_t capacity = std::max(length, capacity_ * 2);
    std::unique_ptr<char[]> grown(new (std::nothrow) char[capacity + 1]);
    if (!grown) return false;
    std::memcpy(grown.get(), data_, size_ + 1);
    heap_ = std::move(grown);
    data_ = heap_.get();
    capacity_ = capacity;
    return true;
}

void LineBuffer::appendGrowing(const char *text, size_t length) noexcept
{
    if (!reserve(size_ + length)) length = capacity_ - size_;
    std::memcpy(data_ + size_, text, length);
    size_ += length;
    data_[size_] = '\0';
}

void LineBuffer::append(const char *text) noexcept
{
    if (text) append(text, std::strlen(text));
}

void LineBuffer::appendDecimal(int64_t value) noexcept
{
    char digits[24];
    char *end = digits + sizeof digits;
    char *first = end;
    // Negated as unsigned so that the smallest value has a magnitude too.
    uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    do {
        *--first = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (value < 0) *--first = '-';
    append(first, static_cast<size_t>(end - first));
}

void LineBuffer::appendZeroPadded(uint32_t value, int digits) noexcept
{
    char text[10];
    int count = std::min(digits, static_cast<int>(sizeof text));
    for (int i = count - 1; i >= 0; --i) {
        text[i] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
    append(text, static_cast<size_t>(count));
}

void LineBuffer::appendFormatted(const char *format, va_list args) noexcept
{
    if (!format) return;
    va_list again;
    va_copy(again, args);
    size_t room = capacity_ - size_ + 1;
    int length = services::formatText(data_ + size_, room, format, args);
    if (length >= 0 && static_cast<size_t>(length) >= room) {
        if (reserve(size_ + static_cast<size_t>(length)))
            services::formatText(data_ + size_, static_cast<size_t>(length) + 1, format, again);
        else
            length = static_cast<int>(room - 1);
    }
    va_end(again);
    if (length < 0) length = 0;  // an encoding error: keep what was there
    size_ += static_cast<size_t>(length);
    data_[size_] = '\0';
}

bool LineBuffer::replaceFirst(const char *pattern, const char *replacement) noexcept
{
    const char *found = std::strstr(data_, pattern);
    if (!found) return false;
    size_t at = static_cast<size_t>(found - data_);
    size_t patternLength = std::strlen(pattern);
    size_t replacementLength = std::strlen(replacement);
    size_t tailLength = size_ - at - patternLength;
    if (!reserve(size_ - patternLength + replacementLength)) return false;
    std::memmove(data_ + at + replacementLength, data_ + at + patternLength, tailLength + 1);
    std::memcpy(data_ + at, replacement, replacementLength);
    size_ = at + replacementLength + tailLength;
    return true;
}

void LineBuffer::truncate(size_t length) noexcept
{
    if (length >= size_) return;
    size_ = length;
    data_[size_] = '\0';
}

}  // namespace tollan::logger
