// One conversion of a printf format, taken apart: what the parser reads
// between the '%' and the conversion character, and what the engine makes of
// it once the '*' arguments are fetched.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>

namespace tollan::services::formatting {

// The size of the argument: C99's length modifiers, L, and the Windows size
// prefixes (%I pointer-sized, %I32, %I64).
enum class ArgumentSize : uint8_t { standard, hh, h, l, ll, j, z, t, L, I, I32, I64 };

// A width or precision from the format saturates here: one past INT_MAX, so
// that a field that wide can never fit a result.
inline constexpr size_t kFieldLimit = static_cast<size_t>(INT_MAX) + 1;

struct Conversion {
    bool leftAlign = false;      // '-'
    bool plusSign = false;       // '+'
    bool spaceSign = false;      // ' '
    bool alternate = false;      // '#'
    bool zeroPad = false;        // '0'
    bool widthArgument = false;  // '*' width, not yet fetched
    bool precisionArgument = false;
    bool hasPrecision = false;
    size_t width = 0;
    size_t precision = 0;
    ArgumentSize size = ArgumentSize::standard;
    char type = '\0';  // the conversion character as written
};

// Reads the conversion whose '%' is at `percent`. Returns one past its
// conversion character, or null when the format ends inside it. Reads no
// argument: the caller fetches '*' values once it knows the conversion.
const char *parseConversion(const char *percent, Conversion &out) noexcept;

// True for the conversion characters the engine knows (including '%').
bool isKnownConversion(char type) noexcept;

// Applies '*' values as C does: a negative width means '-' and its
// magnitude; a negative precision counts as none.
void applyWidthArgument(Conversion &conversion, int width) noexcept;
void applyPrecisionArgument(Conversion &conversion, int precision) noexcept;

}  // namespace tollan::services::formatting
