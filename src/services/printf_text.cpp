#include "services/printf_text.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace tollan::services::formatting {
namespace {

// The bytes of a code point in UTF-8; 0 for one that has no UTF-8 form.
size_t utf8Length(char32_t code) noexcept
{
    if (code < 0x80) return 1;
    if (code < 0x800) return 2;
    if (code >= 0xD800 && code <= 0xDFFF) return 0;
    if (code < 0x10000) return 3;
    return code <= 0x10FFFF ? 4 : 0;
}

// Writes the `length` bytes of an encodable code point.
char *encodeUtf8(char32_t code, size_t length, char *out) noexcept
{
    static constexpr unsigned char kLeads[] = {0, 0, 0xC0, 0xE0, 0xF0};
    for (size_t i = length - 1; i > 0; --i) {
        out[i] = static_cast<char>(0x80 | (code & 0x3F));
        code >>= 6;
    }
    out[0] = static_cast<char>(length == 1 ? code : (kLeads[length] | code));
    return out + length;
}

enum class Step { character, end, invalid };

// Reads the next character of a wide string if its UTF-8 form fits in
// `room` bytes, moving `at` past it. Reads nothing when no byte is left, and
// not the second half of a surrogate pair when four bytes are not.
Step nextCharacter(const wchar_t *&at, size_t room, char32_t &code, size_t &length) noexcept
{
    if (room == 0 || *at == L'\0') return Step::end;
    // Through the unsigned type of the same width, so that a negative 32-bit
    // wchar_t lands past U+10FFFF.
    using Unit = std::conditional_t<sizeof(wchar_t) == 2, uint16_t, uint32_t>;
    const char32_t unit = static_cast<Unit>(*at);
    if constexpr (sizeof(wchar_t) == 2) {
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            if (room < 4) return Step::end;
            const char32_t low = static_cast<Unit>(at[1]);
            if (low < 0xDC00 || low > 0xDFFF) return Step::invalid;
            code = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
            length = 4;
            at += 2;
            return Step::character;
        }
    }
    length = utf8Length(unit);
    if (length == 0) return Step::invalid;
    if (length > room) return Step::end;
    code = unit;
    ++at;
    return Step::character;
}

constexpr char kNullText[] = "(null)";

}  // namespace

bool putCharacter(Output &out, const Conversion &conversion, int character) noexcept
{
    const char byte = static_cast<char>(static_cast<unsigned char>(character));
    Field field;
    field.body = &byte;
    field.bodyLength = 1;
    return out.putField(field, conversion);
}

bool putString(Output &out, const Conversion &conversion, const char *text) noexcept
{
    if (text == nullptr) text = kNullText;
    Field field;
    field.body = text;
    if (conversion.hasPrecision) {
        // memchr stops at the first match, so nothing past it is read.
        const void *terminator = std::memchr(text, '\0', conversion.precision);
        field.bodyLength = terminator != nullptr
                               ? static_cast<size_t>(static_cast<const char *>(terminator) - text)
                               : conversion.precision;
    } else {
        field.bodyLength = std::strlen(text);
    }
    return out.putField(field, conversion);
}

bool putWideCharacter(Output &out, const Conversion &conversion, wint_t character) noexcept
{
    const auto code = static_cast<char32_t>(character);
    const size_t length = utf8Length(code);
    if (length == 0) {
        errno = EILSEQ;
        return false;
    }
    char bytes[4];
    encodeUtf8(code, length, bytes);
    Field field;
    field.body = bytes;
    field.bodyLength = length;
    return out.putField(field, conversion);
}

bool putWideString(Output &out, const Conversion &conversion, const wchar_t *text) noexcept
{
    if (text == nullptr) return putString(out, conversion, nullptr);
    const size_t limit = conversion.hasPrecision ? conversion.precision : SIZE_MAX;
    char32_t code;
    size_t characterLength;

    // First the length, for the padding in front, and the check that every
    // character it reaches has a UTF-8 form.
    size_t length = 0;
    for (const wchar_t *at = text;;) {
        const Step step = nextCharacter(at, limit - length, code, characterLength);
        if (step == Step::end) break;
        if (step == Step::invalid) {
            errno = EILSEQ;
            return false;
        }
        length += characterLength;
    }

    if (!out.padBefore(conversion, length)) return false;
    char chunk[256];
    char *used = chunk;
    const wchar_t *at = text;
    for (size_t left = length; left > 0; left -= characterLength) {
        nextCharacter(at, left, code, characterLength);
        if (used + characterLength > chunk + sizeof chunk) {
            if (!out.put(chunk, static_cast<size_t>(used - chunk))) return false;
            used = chunk;
        }
        used = encodeUtf8(code, characterLength, used);
    }
    return out.put(chunk, static_cast<size_t>(used - chunk)) && out.padAfter(conversion, length);
}

}  // namespace tollan::services::formatting
