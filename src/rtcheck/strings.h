// Interned strings: every name is stored once, so names compare by address.
#pragma once

#include <cstddef>

namespace tollan::rtcheck {

// The one stored copy of `s` (null gives null). The empty string and the
// numbers "0" to "99" come from fixed tables; other texts are kept for the
// life of the process. Null when memory runs out (reported at FATAL).
const char *string(const char *s) noexcept;

// The same for the `length` bytes at `s` (which need no terminator). A
// length of INT_MAX or more is reported and gives null.
const char *stringn(const char *s, size_t length) noexcept;

}  // namespace tollan::rtcheck
