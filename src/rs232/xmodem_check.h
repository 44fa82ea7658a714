// The check values of XModem packets.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tollan::rs232 {

// CRC-16/XMODEM: polynomial 0x1021, initial value 0, most significant bit
// first, no final inversion; one table lookup per byte.
inline constexpr std::array<uint16_t, 256> kCrc16Table = [] {
    std::array<uint16_t, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        unsigned crc = byte << 8;
        for (int bit = 0; bit < 8; ++bit) crc = (crc & 0x8000) != 0 ? (crc << 1) ^ 0x1021 : crc << 1;
        table[byte] = static_cast<uint16_t>(crc);
    }
    return table;
}();

inline uint16_t crc16Xmodem(const unsigned char *data, size_t size) noexcept
{
    uint16_t crc = 0;
    for (size_t i = 0; i < size; ++i)
        crc = static_cast<uint16_t>((crc << 8) ^ kCrc16Table[((crc >> 8) ^ data[i]) & 0xFF]);
    return crc;
}

// The sum of the bytes modulo 256.
inline unsigned char checksum8(const unsigned char *data, size_t size) noexcept
{
    unsigned sum = 0;
    for (size_t i = 0; i < size; ++i) sum += data[i];
    return static_cast<unsigned char>(sum);
}

}  // namespace tollan::rs232
