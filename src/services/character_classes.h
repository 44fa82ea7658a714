// The 256-entry character-class table of the format libraries.
#pragma once

#include <cstdint>

namespace tollan::services {

// Bit 1 of an entry: a letter of the Western code page.
inline constexpr uint8_t kLetterClass = 1u << 1;

// Builds the table; always succeeds.
bool InitSupport() noexcept;
// The class bits of one byte.
uint8_t characterClass(unsigned char c) noexcept;

}  // namespace tollan::services
