// The library's printf for its own texts (the logger's messages among them):
// the printf engine (printf_engine.h, whose comment holds the full rules)
// into a buffer. It prints every value alike on both platforms, floating
// point through std::to_chars, wide characters in UTF-8, and a pointer (%p)
// one way everywhere, as Windows prints it: 16 upper-case hexadecimal
// digits, no prefix ("00007F3A5C0012F0"; a null pointer is
// "0000000000000000"), with width and '-' applied. So a text such as
// "hInstance=0x%p" reads the same on Linux as on Windows.
#pragma once

#include <cstdarg>
#include <cstddef>

#include <tollan/export.h>

namespace tollan::services {

// A pointer as Windows prints it, terminated.
struct PointerText {
    char text[17];
};
PointerText pointerText(const void *pointer) noexcept;

// vsnprintf's contract: writes at most size bytes (terminated when size > 0)
// and returns the length of the whole text, or -1 when it cannot be made
// (a wide character with no UTF-8 form, EILSEQ; a text past INT_MAX,
// EOVERFLOW). A conversion the engine does not know is written as it
// stands and takes no argument.
int formatText(char *buffer, size_t size, const char *format, va_list args) noexcept TOLLAN_PRINTF(3, 0);
// The same with the arguments listed.
int formatTextInto(char *buffer, size_t size, const char *format, ...) noexcept TOLLAN_PRINTF(3, 4);

}  // namespace tollan::services
