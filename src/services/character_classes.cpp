#include "services/character_classes.h"

#include <array>

namespace tollan::services {
namespace {

constinit std::array<uint8_t, 256> table{};

bool isWesternLetter(unsigned c) noexcept
{
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) return true;
    switch (c) {
        case 0x8A:
        case 0x8C:
        case 0x9A:
        case 0x9C:
        case 0x9F:
            return true;
        default:
            // 0xD7 and 0xF7 are the multiplication and division signs.
            return c >= 0xC0 && c != 0xD7 && c != 0xF7;
    }
}

}  // namespace

bool InitSupport() noexcept
{
    table.fill(0);
    for (unsigned c = 0; c < table.size(); ++c)
        if (isWesternLetter(c)) table[c] |= kLetterClass;
    return true;
}

uint8_t characterClass(unsigned char c) noexcept
{
    return table[c];
}

}  // namespace tollan::services
