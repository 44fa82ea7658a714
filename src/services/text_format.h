// The library's printf: the C library's formatting, except that a pointer
// (%p) prints one way on both platforms, as Windows prints it: 16 upper-case
// hexadecimal digits, no prefix ("00007F3A5C0012F0"; a null pointer is
// "0000000000000000"). glibc would print "0x7f3a5c0012f0" and "(nil)", so a
// text such as "hInstance=0x%p" would read "0x0x7f3a...". Every text of the
// library that has a %p goes through here (the logger's messages among them).
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
// and returns the length of the whole text, or -1 for a format it cannot
// handle. Width and the '-' flag apply to %p; other flags and a precision do
// not.
int formatText(char *buffer, size_t size, const char *format, va_list args) noexcept TOLLAN_PRINTF(3, 0);
// The same with the arguments listed.
int formatTextInto(char *buffer, size_t size, const char *format, ...) noexcept TOLLAN_PRINTF(3, 4);

}  // namespace tollan::services
