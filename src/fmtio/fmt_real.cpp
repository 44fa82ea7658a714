#include "fmtio/fmt_real.h"

#include <charconv>
#include <cstring>

namespace tollan::fmtio {
namespace {

// Room for the longest text: 309 integer digits of the largest double, the
// point, 200 decimals, a sign and an exponent of up to 10 digits.
constexpr size_t kTextRoom = 560;

std::to_chars_result convert(char *first, char *last, double value, bool single, std::chars_format format,
                             uint32_t precision) noexcept
{
    if (single) {
        const auto narrow = static_cast<float>(value);
        if (precision == kNoPrecision) return std::to_chars(first, last, narrow, format);
        return std::to_chars(first, last, narrow, format, static_cast<int>(precision));
    }
    if (precision == kNoPrecision) return std::to_chars(first, last, value, format);
    return std::to_chars(first, last, value, format, static_cast<int>(precision));
}

// Rewrites the exponent after 'e' (sign, then at least `digits` digits) in
// place; the text ends at *end.
void widenExponent(char *text, char **end, uint32_t digits, bool upper) noexcept
{
    char *mark = static_cast<char *>(std::memchr(text, 'e', static_cast<size_t>(*end - text)));
    if (!mark) return;  // inf or nan
    if (upper) *mark = 'E';
    char *sign = mark + 1;
    char *first = sign + 1;
    const auto have = static_cast<uint32_t>(*end - first);
    if (have >= digits) return;
    const uint32_t more = digits - have;
    std::memmove(first + more, first, have);
    std::memset(first, '0', more);
    *end += more;
}

// Drops the zeros that end the decimals, and the point when none remain.
void trimZeros(char *text, char **end) noexcept
{
    char *mark = text;
    while (mark < *end && *mark != 'e' && *mark != 'E') ++mark;
    char *point = static_cast<char *>(std::memchr(text, '.', static_cast<size_t>(mark - text)));
    if (!point) return;
    char *last = mark;
    while (last > point + 1 && last[-1] == '0') --last;
    if (last == point + 1) last = point;
    const auto tail = static_cast<size_t>(*end - mark);
    std::memmove(last, mark, tail);
    *end = last + tail;
}

}  // namespace

int32_t formatReal(ByteBuffer &out, const Conversion &conversion, double value, bool single) noexcept
{
    const FormatItem &item = *conversion.item;
    const bool exponential = item.as.real.exponential != 0;
    char text[kTextRoom];
    // The exponent is widened later: keep room for its extra digits.
    const auto converted =
        convert(text, text + kTextRoom - kLargestExponentDigits, value, single,
                exponential ? std::chars_format::scientific : std::chars_format::fixed, conversion.precision);
    char *end = converted.ptr;
    if (exponential) widenExponent(text, &end, conversion.exponentDigits, item.xFlag != 0);
    if (item.as.real.rtFlag) trimZeros(text, &end);

    const auto length = end - text;
    if (conversion.width != kUnlimited) {
        if (length > conversion.width) return FMT_ERR_WIDTH_EXCEEDED;
        out.fill(' ', static_cast<size_t>(conversion.width - length));
    }
    out.append(text, static_cast<size_t>(length));
    return 0;
}

}  // namespace tollan::fmtio
