#include "debugger/lookup3.h"

namespace tollan::debugger {
namespace {

constexpr uint32_t rotate(uint32_t x, int k) noexcept
{
    return (x << k) | (x >> (32 - k));
}

// Mixes three 32-bit values reversibly.
void mix(uint32_t &a, uint32_t &b, uint32_t &c) noexcept
{
    a -= c;
    a ^= rotate(c, 4);
    c += b;
    b -= a;
    b ^= rotate(a, 6);
    a += c;
    c -= b;
    c ^= rotate(b, 8);
    b += a;
    a -= c;
    a ^= rotate(c, 16);
    c += b;
    b -= a;
    b ^= rotate(a, 19);
    a += c;
    c -= b;
    c ^= rotate(b, 4);
    b += a;
}

// The last mixing of the three values into c.
void finalMix(uint32_t &a, uint32_t &b, uint32_t &c) noexcept
{
    c ^= b;
    c -= rotate(b, 14);
    a ^= c;
    a -= rotate(c, 11);
    b ^= a;
    b -= rotate(a, 25);
    c ^= b;
    c -= rotate(b, 16);
    a ^= c;
    a -= rotate(c, 4);
    b ^= a;
    b -= rotate(a, 14);
    c ^= b;
    c -= rotate(b, 24);
}

uint32_t littleEndianWord(const unsigned char *bytes, size_t count) noexcept
{
    uint32_t word = 0;
    for (size_t i = 0; i < count; ++i) word |= static_cast<uint32_t>(bytes[i]) << (8 * i);
    return word;
}

}  // namespace

uint32_t hashlittle(const void *key, size_t length, uint32_t initval) noexcept
{
    const auto *bytes = static_cast<const unsigned char *>(key);
    uint32_t a = 0xDEADBEEFu + static_cast<uint32_t>(length) + initval;
    uint32_t b = a;
    uint32_t c = a;
    while (length > 12) {
        a += littleEndianWord(bytes, 4);
        b += littleEndianWord(bytes + 4, 4);
        c += littleEndianWord(bytes + 8, 4);
        mix(a, b, c);
        length -= 12;
        bytes += 12;
    }
    // The last block of 1 to 12 bytes; none left means the value as it stands.
    if (length == 0) return c;
    a += littleEndianWord(bytes, length < 4 ? length : 4);
    if (length > 4) b += littleEndianWord(bytes + 4, length < 8 ? length - 4 : 4);
    if (length > 8) c += littleEndianWord(bytes + 8, length - 8);
    finalMix(a, b, c);
    return c;
}

}  // namespace tollan::debugger
