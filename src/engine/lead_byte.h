// Text walking under a multibyte code page: a lead byte and the byte after
// it form one character.
#pragma once

namespace tollan::engine {

// Tells whether a byte starts a two-byte character. Null stands for a
// single-byte code page.
using LeadBytePredicate = bool (*)(unsigned char byte) noexcept;

// The width in bytes of the character starting at text (1 at its terminator).
inline int characterWidth(const char *text, LeadBytePredicate isLeadByte) noexcept
{
    const auto byte = static_cast<unsigned char>(*text);
    return isLeadByte != nullptr && isLeadByte(byte) && text[1] != '\0' ? 2 : 1;
}

}  // namespace tollan::engine
