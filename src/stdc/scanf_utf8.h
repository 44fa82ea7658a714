// UTF-8 in, wchar_t out: how the wide conversions (%lc, %ls, %l[) read
// bytes and store characters.
#pragma once

#include <cstddef>

#include "stdc/scanf_input.h"

namespace tollan::stdc {

// The length of the UTF-8 sequence that `lead` starts: 1 to 4, or 0 when it
// starts none (a continuation byte, or a lead that could only start an
// overlong sequence or one past U+10FFFF).
int utf8SequenceLength(unsigned char lead) noexcept;

// The code points of the characters whose first byte is `lead`, a byte that
// starts a sequence of two to four bytes (for any other byte, the byte
// itself).
struct CodePointSpan {
    char32_t first;
    char32_t last;
};
CodePointSpan codePointsStartingWith(unsigned char lead) noexcept;

// Decodes the character at *at (before end) and moves past it. False when
// the bytes there are not UTF-8.
bool decodeUtf8(const char **at, const char *end, char32_t *out) noexcept;

enum class Utf8Result {
    character,  // *out holds the character
    tooLong,    // the character does not fit the field's width; its first
                // byte was given back
    invalid,    // not UTF-8 (errno EILSEQ); the byte that showed it was
                // given back, unless the source had ended
};

// Reads the rest of the character whose first byte, `lead`, the field has
// just returned.
Utf8Result finishUtf8(ScanField &field, int lead, char32_t *out) noexcept;

// Stores `character` at *at as one wchar_t, or as a surrogate pair where
// wchar_t has 16 bits, and moves past what it stored.
void putWide(char32_t character, wchar_t **at) noexcept;

}  // namespace tollan::stdc
