// The small formatter that renders types as English text for error messages.
#pragma once

#include <cstddef>
#include <cstdint>

#include <tollan/rtcheck.h>

namespace tollan::rtcheck {

// A caller's buffer being filled: text past the room is counted, not
// written, so `length` is the whole text's length.
struct TypeText {
    char *buffer;
    size_t room;  // characters that fit, the terminator excluded
    size_t length = 0;
    int depth = 0;  // nesting of %t, against cyclic types
};

// Appends to `out` following `format`, whose directives are %k (a token code,
// int32_t, as tokenrep prints it), %t (a const Tynode *, as outtype prints
// it), %s (a C string), %w (a const TyCoordinate *: "file:line") and %llu
// (an unsigned long long); any other character is copied.
void say(TypeText &out, const char *format, ...) noexcept;

// Appends the English text of `ty`.
void sayType(TypeText &out, const Tynode *ty) noexcept;

}  // namespace tollan::rtcheck
