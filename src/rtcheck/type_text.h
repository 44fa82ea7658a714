// The small formatter that renders types as English text for error messages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

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

// One argument of a directive, tagged with what it holds.
struct TextArgument {
    enum class Kind : uint8_t { token, type, text, coordinate, number } kind;
    union {
        int32_t token;
        const Tynode *type;
        const char *text;
        const TyCoordinate *coordinate;
        unsigned long long number;
    };
    TextArgument(int32_t value) noexcept : kind(Kind::token), token(value) {}
    TextArgument(const Tynode *value) noexcept : kind(Kind::type), type(value) {}
    TextArgument(const char *value) noexcept : kind(Kind::text), text(value) {}
    TextArgument(const TyCoordinate *value) noexcept : kind(Kind::coordinate), coordinate(value) {}
    TextArgument(unsigned long long value) noexcept : kind(Kind::number), number(value) {}
};

// Appends to `out` following `format`, whose directives are %k (a token code
// as tokenrep prints it), %t (a type as outtype prints it), %s (a text), %w
// (a coordinate: "file:line") and %llu (a number); any other character is
// copied. A directive whose argument is missing or of another kind prints
// nothing.
void sayWith(TypeText &out, const char *format, std::initializer_list<TextArgument> arguments) noexcept;

template <typename... Arguments>
void say(TypeText &out, const char *format, Arguments... arguments) noexcept
{
    sayWith(out, format, {TextArgument(arguments)...});
}

// Appends the English text of `ty`.
void sayType(TypeText &out, const Tynode *ty) noexcept;

}  // namespace tollan::rtcheck
