#include "services/printf_float.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "services/memory.h"

namespace tollan::services::formatting {
namespace {

template <typename Float>
struct Exactness {
    // Past this many decimals every value's expansion is zeros: the
    // smallest subnormal has exactly this many. A precision beyond it is
    // written as zeros instead of being asked of to_chars.
    static constexpr size_t kDecimals =
        static_cast<size_t>(std::numeric_limits<Float>::digits - std::numeric_limits<Float>::min_exponent);
    // The same for hexadecimal digits after the point.
    static constexpr size_t kHexDigits = static_cast<size_t>(std::numeric_limits<Float>::digits + 3) / 4;
};

// Bytes a conversion needs beyond its digits: the first digit, the point,
// the exponent, a point that '#' adds, and the "0.000" that %#g moves in
// front of the digits (kFront).
constexpr size_t kFront = 8;
constexpr size_t kFrame = kFront + 16;

// Where to_chars writes: a block on the stack that holds every double
// conversion, or the library heap for the long doubles that need more.
class DigitBuffer {
public:
    explicit DigitBuffer(size_t size) noexcept
        : data_(size <= sizeof stack_ ? stack_ : static_cast<char *>(allocateBlock(size))), size_(size)
    {
    }
    ~DigitBuffer()
    {
        if (data_ != stack_) freeBlock(data_);
    }
    DigitBuffer(const DigitBuffer &) = delete;
    DigitBuffer &operator=(const DigitBuffer &) = delete;

    char *begin() noexcept { return data_; }
    char *end() noexcept { return data_ + size_; }

private:
    char stack_[1536];
    char *data_;
    size_t size_;
};

void toUpper(char *begin, char *end) noexcept
{
    for (char *at = begin; at != end; ++at)
        if (*at >= 'a' && *at <= 'z') *at = static_cast<char>(*at - 'a' + 'A');
}

// Inserts '.' at `at` in a text that ends at `end`; returns the new end.
char *insertPoint(char *at, char *end) noexcept
{
    std::memmove(at + 1, at, static_cast<size_t>(end - at));
    *at = '.';
    return end + 1;
}

// The exponent letter of a to_chars text, searched from its end.
char *exponentOf(char *begin, char *end, char letter) noexcept
{
    for (char *at = end; at != begin;)
        if (*--at == letter) return at;
    return end;
}

// Reads the signed decimal exponent that follows an exponent letter.
long readExponent(const char *at, const char *end) noexcept
{
    const bool negative = *at == '-';
    long value = 0;
    for (++at; at != end; ++at) value = value * 10 + (*at - '0');
    return negative ? -value : value;
}

// The pieces of a finite value's digits, as the styles lay them out.
struct Layout {
    char *body;
    char *bodyEnd;
    size_t trailingZeros = 0;
    char *suffix = nullptr;  // the exponent, when the style has one
    char *suffixEnd = nullptr;
};

// %f: to_chars gives the digits; a precision past the exact decimals adds zeros.
template <typename Float>
Layout fixedLayout(char *begin, char *end, Float value, size_t precision, bool alternate) noexcept
{
    const size_t asked = std::min(precision, Exactness<Float>::kDecimals);
    char *last = std::to_chars(begin, end, value, std::chars_format::fixed, static_cast<int>(asked)).ptr;
    if (alternate && precision == 0) *last++ = '.';
    return {begin, last, precision - asked};
}

// %e: the zeros past the exact digits go before the exponent.
template <typename Float>
Layout scientificLayout(char *begin, char *end, Float value, size_t precision, bool alternate) noexcept
{
    const size_t asked = std::min(precision, Exactness<Float>::kDecimals);
    char *last = std::to_chars(begin, end, value, std::chars_format::scientific, static_cast<int>(asked)).ptr;
    char *exponent = exponentOf(begin, last, 'e');
    if (alternate && precision == 0) last = insertPoint(exponent++, last);
    return {begin, exponent, precision - asked, exponent, last};
}

// %#g: C's %g with its trailing zeros and point kept. The value is rounded
// once to P significant digits in style e, and the digits are moved into
// style f when the exponent X has -4 <= X < P. `begin` has kFront bytes of
// room in front of it for the zeros of a small value.
template <typename Float>
Layout alternateGeneralLayout(char *begin, char *end, Float value, size_t significant) noexcept
{
    const size_t asked = std::min(significant, Exactness<Float>::kDecimals);
    char *last =
        std::to_chars(begin, end, value, std::chars_format::scientific, static_cast<int>(asked - 1)).ptr;
    char *exponent = exponentOf(begin, last, 'e');
    const long x = readExponent(exponent + 1, last);
    const size_t zeros = significant - asked;
    if (x < -4 || (x >= 0 && static_cast<size_t>(x) >= significant)) {
        if (asked == 1) last = insertPoint(exponent++, last);
        return {begin, exponent, zeros, exponent, last};
    }
    // The digits, without the point that follows the first ("d.ddd").
    char *digits = begin;
    if (asked > 1) {
        begin[1] = begin[0];
        digits = begin + 1;
    }
    if (x < 0) {
        const size_t lead = static_cast<size_t>(1 - x);  // "0." and -x-1 zeros
        digits -= lead;
        std::memcpy(digits, "0.000", lead);
        return {digits, exponent, zeros};
    }
    // The point goes after digit X. The digits reach that far: X < P, and X
    // stays below the exact decimals where P was cut to them.
    std::memmove(digits - 1, digits, static_cast<size_t>(x) + 1);
    digits[x] = '.';
    return {digits - 1, asked == 1 ? digits + 1 : exponent, zeros};
}

template <typename Float>
Layout generalLayout(char *begin, char *end, Float value, size_t precision, bool alternate) noexcept
{
    const size_t significant = precision == 0 ? 1 : precision;
    if (alternate) return alternateGeneralLayout(begin + kFront, end, value, significant);
    // to_chars' general style with a precision is C's %g: it rounds to P
    // significant digits, picks the style by the exponent and drops the
    // trailing zeros. Past the exact decimals the result no longer changes.
    const size_t asked = std::min(significant, Exactness<Float>::kDecimals);
    char *last = std::to_chars(begin, end, value, std::chars_format::general, static_cast<int>(asked)).ptr;
    return {begin, last};
}

// %a: to_chars' hexadecimal form, without its "0x" (the prefix adds it).
template <typename Float>
Layout hexLayout(char *begin, char *end, Float value, const Conversion &conversion) noexcept
{
    char *last;
    size_t zeros = 0;
    if (conversion.hasPrecision) {
        const size_t asked = std::min(conversion.precision, Exactness<Float>::kHexDigits);
        last = std::to_chars(begin, end, value, std::chars_format::hex, static_cast<int>(asked)).ptr;
        zeros = conversion.precision - asked;
    } else {
        last = std::to_chars(begin, end, value, std::chars_format::hex).ptr;
    }
    char *exponent = exponentOf(begin, last, 'p');
    if (conversion.alternate && std::find(begin, exponent, '.') == exponent)
        last = insertPoint(exponent++, last);
    return {begin, exponent, zeros, exponent, last};
}

// An upper bound of the bytes a finite, non-negative value's conversion takes
// in the digit buffer, zeros past the exact digits left out.
template <typename Float>
size_t bufferSizeFor(Float value, const Conversion &conversion, char style) noexcept
{
    if (style == 'a') return Exactness<Float>::kHexDigits + kFrame;
    const size_t digits =
        std::min(conversion.hasPrecision ? conversion.precision : 6, Exactness<Float>::kDecimals);
    if (style != 'f' || value < 1) return digits + kFrame;
    // 2^k has at most 0.30103 k + 1 decimal digits.
    const auto integerDigits = static_cast<size_t>(std::ilogb(value)) * 30103 / 100000 + 2;
    return integerDigits + digits + kFrame;
}

template <typename Float>
bool putFloatOf(Output &out, const Conversion &conversion, Float value) noexcept
{
    const bool upper = conversion.type >= 'A' && conversion.type <= 'Z';
    const char style = static_cast<char>(upper ? conversion.type - 'A' + 'a' : conversion.type);
    char prefix[3];
    size_t prefixLength = 0;
    if (std::signbit(value))
        prefix[prefixLength++] = '-';
    else if (conversion.plusSign)
        prefix[prefixLength++] = '+';
    else if (conversion.spaceSign)
        prefix[prefixLength++] = ' ';

    Field field;
    field.prefix = prefix;
    if (!std::isfinite(value)) {
        field.prefixLength = prefixLength;
        field.body = std::isnan(value) ? (upper ? "NAN" : "nan") : (upper ? "INF" : "inf");
        field.bodyLength = 3;
        return out.putField(field, conversion);
    }
    if (style == 'a') {
        prefix[prefixLength++] = '0';
        prefix[prefixLength++] = upper ? 'X' : 'x';
    }
    field.prefixLength = prefixLength;
    field.zeroFills = conversion.zeroPad;
    value = std::fabs(value);

    DigitBuffer buffer(bufferSizeFor(value, conversion, style));
    if (buffer.begin() == nullptr) {
        errno = ENOMEM;
        return false;
    }
    const size_t precision = conversion.hasPrecision ? conversion.precision : 6;
    const bool alternate = conversion.alternate;
    Layout layout;
    switch (style) {
        case 'f':
            layout = fixedLayout(buffer.begin(), buffer.end(), value, precision, alternate);
            break;
        case 'e':
            layout = scientificLayout(buffer.begin(), buffer.end(), value, precision, alternate);
            break;
        case 'g':
            layout = generalLayout(buffer.begin(), buffer.end(), value, precision, alternate);
            break;
        default:
            layout = hexLayout(buffer.begin(), buffer.end(), value, conversion);
            break;
    }
    if (upper) toUpper(layout.body, layout.suffix != nullptr ? layout.suffixEnd : layout.bodyEnd);
    field.body = layout.body;
    field.bodyLength = static_cast<size_t>(layout.bodyEnd - layout.body);
    field.trailingZeros = layout.trailingZeros;
    if (layout.suffix != nullptr) {
        field.suffix = layout.suffix;
        field.suffixLength = static_cast<size_t>(layout.suffixEnd - layout.suffix);
    }
    return out.putField(field, conversion);
}

}  // namespace

bool putFloat(Output &out, const Conversion &conversion, double value) noexcept
{
    return putFloatOf(out, conversion, value);
}

bool putFloat(Output &out, const Conversion &conversion, long double value) noexcept
{
    return putFloatOf(out, conversion, value);
}

}  // namespace tollan::services::formatting
