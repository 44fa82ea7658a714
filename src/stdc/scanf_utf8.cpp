#include "stdc/scanf_utf8.h"

#include <cerrno>

namespace tollan::stdc {
namespace {

// The bytes a sequence may have second: narrower than 80..BF after the
// leads where the full span would give overlong forms, surrogates or code
// points past U+10FFFF.
bool secondByteFits(unsigned char lead, int second) noexcept
{
    switch (lead) {
        case 0xE0:
            return second >= 0xA0 && second <= 0xBF;
        case 0xED:
            return second >= 0x80 && second <= 0x9F;
        case 0xF0:
            return second >= 0x90 && second <= 0xBF;
        case 0xF4:
            return second >= 0x80 && second <= 0x8F;
        default:
            return second >= 0x80 && second <= 0xBF;
    }
}

// The bits of the code point that the first byte of a sequence holds.
char32_t leadBits(unsigned char lead, int length) noexcept
{
    return static_cast<char32_t>(length == 1 ? lead : lead & (0x7F >> length));
}

// Decodes the character that starts with `lead`, a valid lead of `length`
// bytes, taking the further bytes from `next` (-1 when there are none).
// False when they do not make UTF-8; *offending is then the byte that
// showed it (-1 when the bytes ran out).
template <typename NextByte>
bool decodeSequence(unsigned char lead, int length, NextByte next, char32_t *out, int *offending) noexcept
{
    char32_t character = leadBits(lead, length);
    for (int i = 1; i < length; ++i) {
        const int byte = next();
        const bool fits = i == 1 ? secondByteFits(lead, byte) : (byte & 0xC0) == 0x80;
        if (byte < 0 || !fits) {
            *offending = byte;
            return false;
        }
        character = character << 6 | static_cast<char32_t>(byte & 0x3F);
    }
    *out = character;
    return true;
}

}  // namespace

int utf8SequenceLength(unsigned char lead) noexcept
{
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    return 0;
}

CodePointSpan codePointsStartingWith(unsigned char lead) noexcept
{
    const int length = utf8SequenceLength(lead);
    if (length < 2) return {lead, lead};
    const int freeBits = 6 * (length - 1);
    const char32_t first = leadBits(lead, length) << freeBits;
    const char32_t last = first + ((char32_t{1} << freeBits) - 1);
    return {first, last > 0x10FFFF ? char32_t{0x10FFFF} : last};
}

bool decodeUtf8(const char **at, const char *end, char32_t *out) noexcept
{
    const auto lead = static_cast<unsigned char>(*(*at)++);
    const int length = utf8SequenceLength(lead);
    if (length == 0) return false;
    const auto next = [&]() noexcept { return *at == end ? -1 : int{static_cast<unsigned char>(*(*at)++)}; };
    int offending = 0;
    return decodeSequence(lead, length, next, out, &offending);
}

Utf8Result finishUtf8(ScanField &field, int lead, char32_t *out) noexcept
{
    const auto leadByte = static_cast<unsigned char>(lead);
    const int length = utf8SequenceLength(leadByte);
    if (length == 0) {
        field.giveBack(lead);
        errno = EILSEQ;
        return Utf8Result::invalid;
    }
    if (field.left() < static_cast<size_t>(length - 1)) {
        field.giveBack(lead);
        return Utf8Result::tooLong;
    }
    int offending = 0;
    if (!decodeSequence(
            leadByte, length, [&]() noexcept { return field.next(); }, out, &offending)) {
        // The byte may start the next character: it stays unread.
        if (offending >= 0) field.giveBack(offending);
        errno = EILSEQ;
        return Utf8Result::invalid;
    }
    return Utf8Result::character;
}

void putWide(char32_t character, wchar_t **at) noexcept
{
    if (sizeof(wchar_t) == 2 && character > 0xFFFF) {
        character -= 0x10000;
        *(*at)++ = static_cast<wchar_t>(0xD800 + (character >> 10));
        *(*at)++ = static_cast<wchar_t>(0xDC00 + (character & 0x3FF));
        return;
    }
    *(*at)++ = static_cast<wchar_t>(character);
}

}  // namespace tollan::stdc
