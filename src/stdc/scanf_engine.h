// The C library's scanf engine: C99's scanf conversions, with the size
// prefixes of Windows (%I, %I32, %I64) beside C99's, done by the library
// itself so that both builds read every text alike. Floating point goes
// through std::from_chars (correctly rounded, locale-free).
#pragma once

#include <cstdarg>

namespace tollan::stdc {

// Where scanned text comes from.
class TextSource {
public:
    // The next byte (0..255), or -1 at the end of the input or when reading
    // failed (the source keeps its own error state).
    virtual int next() noexcept = 0;
    // Gives back `byte`, the value next() returned last (never -1); at most
    // one byte is given back between two calls of next().
    virtual void giveBack(int byte) noexcept = 0;

protected:
    TextSource() = default;
    TextSource(const TextSource &) = default;
    TextSource &operator=(const TextSource &) = default;
    ~TextSource() = default;
};

// Reads `source` as `format` says, storing through the pointers of
// `arguments`. Returns the number of items assigned, or -1 (EOF) when the
// input ended or failed before the first conversion was complete.
int scanFormatted(TextSource &source, const char *format, va_list arguments) noexcept;

}  // namespace tollan::stdc
