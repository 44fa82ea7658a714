// Case-blind byte matching of the byte and string utilities.
#pragma once

#include <cctype>

namespace tollan::fmtio {

inline int upper(char c) noexcept
{
    return std::toupper(static_cast<unsigned char>(c));
}

// Equal, or equal under toupper.
inline bool sameIgnoringCase(char a, char b) noexcept
{
    return a == b || upper(a) == upper(b);
}

// -1 or 1 for two bytes that do not match, ordered by toupper.
inline int orderIgnoringCase(char a, char b) noexcept
{
    return upper(a) < upper(b) ? -1 : 1;
}

// -1, 0 or 1 from the sign of a comparison result.
inline int signOf(int comparison) noexcept
{
    return (comparison > 0) - (comparison < 0);
}

}  // namespace tollan::fmtio
