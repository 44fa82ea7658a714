// Length-prefixed byte strings (a length byte, then up to 255 bytes).
#pragma once

#include "engine/lead_byte.h"

namespace tollan::engine {

inline constexpr int kPascalStringMax = 255;

// Copies the C string source into destination (room for 256 bytes) as a
// length byte and the text, without a terminator. Text beyond 255 bytes is
// cut; under a multibyte code page the cut never splits a character, so a
// two-byte character that would start at byte 255 is left out (254 bytes).
// Returns the stored length.
int CToPStr(unsigned char *destination, const char *source, LeadBytePredicate isLeadByte) noexcept;

}  // namespace tollan::engine
