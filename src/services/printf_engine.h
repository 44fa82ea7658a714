// The library's printf engine: C99's printf conversions with the size
// prefixes of Windows (%I, %I32, %I64), done by the library itself so that
// TOLLAN.dll and libtollan.so print every value alike. Floating point goes
// through std::to_chars (correctly rounded, locale-free); %p prints the
// library's one pointer form (pointerText in text_format.h).
//
// The text goes to a sink in pieces; the C library's printf family, the
// library's own texts and snprintf-style buffers all sit on this one engine.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace tollan::services {

// Where formatted text goes.
class TextSink {
public:
    // Takes the next piece of the text (length > 0). False when the
    // destination failed: formatting stops at once and reports -1, leaving
    // errno as the sink set it.
    virtual bool put(const char *text, size_t length) noexcept = 0;

protected:
    TextSink() = default;
    TextSink(const TextSink &) = default;
    TextSink &operator=(const TextSink &) = default;
    ~TextSink() = default;
};

// Formats `format` with `arguments` into `sink`. Returns the length of the
// whole text, or -1 when the sink failed, when the length would pass
// INT_MAX (errno EOVERFLOW) or when a wide character cannot be encoded
// (errno EILSEQ). `arguments` is consumed as vprintf consumes it.
int printFormatted(TextSink &sink, const char *format, va_list arguments) noexcept;

// vsnprintf's contract on the engine: writes at most size bytes of the text
// into buffer (terminated when size > 0) and returns the length of the whole
// text, or -1 as printFormatted.
int printToBuffer(char *buffer, size_t size, const char *format, va_list arguments) noexcept;

}  // namespace tollan::services
