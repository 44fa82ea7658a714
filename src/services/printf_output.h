// The engine's side of a sink: counts the text, refuses a text longer than
// INT_MAX, pads from static blocks, and lays out one converted field.
#pragma once

#include <climits>
#include <cstddef>

#include "services/printf_conversion.h"
#include "services/printf_engine.h"

namespace tollan::services::formatting {

// A converted value in its parts, in the order they are written. Padding
// goes before the prefix (spaces), after the prefix (zeros, when zeroFills)
// or after the whole (spaces, when left-aligned).
struct Field {
    const char *prefix = "";  // sign, "0x"
    size_t prefixLength = 0;
    size_t leadingZeros = 0;  // an integer's precision
    const char *body = "";
    size_t bodyLength = 0;
    size_t trailingZeros = 0;  // digits past what the digit buffer holds
    const char *suffix = "";   // an exponent
    size_t suffixLength = 0;
    bool zeroFills = false;  // the '0' flag applies to this value

    size_t length() const noexcept
    {
        return prefixLength + leadingZeros + bodyLength + trailingZeros + suffixLength;
    }
};

class Output {
public:
    explicit Output(TextSink &sink) noexcept : sink_(sink) {}

    // Each returns false once the text has failed: the sink refused a piece
    // (errno as it left it) or the text passed INT_MAX (errno EOVERFLOW).
    bool put(const char *text, size_t length) noexcept
    {
        if (length == 0) return true;
        if (!fits(length)) return false;
        count_ += length;
        return sink_.put(text, length);
    }
    bool putZeros(size_t count) noexcept { return count == 0 || fillZeros(count); }
    bool putSpaces(size_t count) noexcept { return count == 0 || fillSpaces(count); }
    // Writes `field` padded to the conversion's width; nothing of it when it
    // would take the text past INT_MAX.
    bool putField(const Field &field, const Conversion &conversion) noexcept;

    // Spaces before a field of `length` bytes written piece by piece, and
    // after it: the width's padding on the side the '-' flag chooses.
    bool padBefore(const Conversion &conversion, size_t length) noexcept;
    bool padAfter(const Conversion &conversion, size_t length) noexcept;

    // The length of the text so far (never past INT_MAX).
    size_t count() const noexcept { return count_; }

private:
    // False, with errno EOVERFLOW, when length more bytes would take the
    // text past INT_MAX.
    bool fits(size_t length) noexcept
    {
        return length <= static_cast<size_t>(INT_MAX) - count_ || overflows();
    }
    bool overflows() noexcept;
    bool fillZeros(size_t count) noexcept;
    bool fillSpaces(size_t count) noexcept;
    // Writes count bytes taken from a static block of one repeated byte.
    bool fill(const char *block, size_t count) noexcept;

    TextSink &sink_;
    size_t count_ = 0;
};

}  // namespace tollan::services::formatting
