// What a printf or scanf format takes from its argument list, read with the
// engines' own parsers, so that a checker sees a format exactly as the
// engine that runs it will: one step per conversion, in order.
#pragma once

#include <cstdint>

namespace tollan::stdc {

enum class FormatFamily : uint8_t { printf, scanf };

// The C type of one argument, before any pointer: the pointer levels are
// counted apart.
enum class ArgumentType : uint8_t {
    Int,
    UnsignedInt,
    Long,
    UnsignedLong,
    LongLong,
    UnsignedLongLong,
    SignedChar,
    UnsignedChar,
    Short,
    UnsignedShort,
    Char,
    WideChar,  // wchar_t
    Float,
    Double,
    LongDouble,
    Void,
    Size,     // size_t
    Ptrdiff,  // ptrdiff_t
    Intmax,   // intmax_t
    Uintmax,  // uintmax_t
};

struct FormatArgument {
    ArgumentType type;
    uint8_t indirection;  // levels of pointer: int * is Int with 1
};

// The most arguments one conversion takes: a '*' width, a '*' precision and
// the value.
inline constexpr int kMostArgumentsPerConversion = 3;

enum class FormatStep : uint8_t {
    conversion,  // out[0 .. *count - 1] are the arguments of the next conversion (maybe none)
    end,         // the format has no conversion left
    malformed,   // the engine stops here: nothing after this point is read
};

// Reads the next conversion at or after *cursor and moves *cursor past it.
// printf: a conversion the engine does not know, "%%", or one that the
// format ends inside takes no argument, as the engine prints it as it
// stands; the last ends the walk (end). scanf: a '*' conversion and "%%"
// take none; a conversion that the engine refuses is malformed.
// Null cursor or *cursor: end.
FormatStep nextFormatArguments(const char **cursor, FormatFamily family,
                               FormatArgument (&out)[kMostArgumentsPerConversion], int *count) noexcept;

}  // namespace tollan::stdc
