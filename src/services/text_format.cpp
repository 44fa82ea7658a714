#include "services/text_format.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <type_traits>

namespace tollan::services {
namespace {

constexpr const char kFlags[] = "-+ #0'";

enum class Length { none, hh, h, l, ll, j, z, t, L };

// A wide character as it travels through "...": Windows' 16-bit wint_t
// arrives promoted to int.
using PromotedWint = std::conditional_t<(sizeof(wint_t) < sizeof(int)), int, wint_t>;

// One conversion of a format, as parsed.
struct Conversion {
    const char *start;  // its '%'
    const char *end;    // one past its conversion character
    bool leftAlign;
    bool starWidth;
    bool starPrecision;
    Length length;
    char type;
};

// Parses the conversion at `percent`; false when the format ends inside it.
bool parseConversion(const char *percent, Conversion *out) noexcept
{
    const char *at = percent + 1;
    out->start = percent;
    out->leftAlign = false;
    out->starWidth = false;
    out->starPrecision = false;
    for (; *at != '\0' && std::strchr(kFlags, *at) != nullptr; ++at)
        if (*at == '-') out->leftAlign = true;
    if (*at == '*') {
        out->starWidth = true;
        ++at;
    }
    while (*at >= '0' && *at <= '9') ++at;
    if (*at == '.') {
        ++at;
        if (*at == '*') {
            out->starPrecision = true;
            ++at;
        }
        while (*at >= '0' && *at <= '9') ++at;
    }
    out->length = Length::none;
    switch (*at) {
        case 'h':
            out->length = at[1] == 'h' ? Length::hh : Length::h;
            at += at[1] == 'h' ? 2 : 1;
            break;
        case 'l':
            out->length = at[1] == 'l' ? Length::ll : Length::l;
            at += at[1] == 'l' ? 2 : 1;
            break;
        case 'j':
            out->length = Length::j;
            ++at;
            break;
        case 'z':
            out->length = Length::z;
            ++at;
            break;
        case 't':
            out->length = Length::t;
            ++at;
            break;
        case 'L':
            out->length = Length::L;
            ++at;
            break;
        default:
            break;
    }
    if (*at == '\0') return false;
    out->type = *at;
    out->end = at + 1;
    return true;
}

// True when the format has a %p conversion: only then is it taken apart.
bool hasPointerConversion(const char *format) noexcept
{
    for (const char *percent = std::strchr(format, '%'); percent != nullptr;
         percent = std::strchr(percent, '%')) {
        if (percent[1] == '%') {
            percent += 2;
            continue;
        }
        Conversion conversion;
        if (!parseConversion(percent, &conversion)) return false;
        if (conversion.type == 'p') return true;
        percent = conversion.end;
    }
    return false;
}

// Appends to a bounded buffer, counting what would have been written.
class Sink {
public:
    Sink(char *buffer, size_t size) noexcept : buffer_(buffer), size_(size) {}

    void put(const char *text, size_t length) noexcept
    {
        if (written_ + 1 < size_) {
            const size_t room = size_ - 1 - written_;
            std::memcpy(buffer_ + written_, text, length < room ? length : room);
        }
        written_ += length;
    }
    void pad(size_t count) noexcept
    {
        for (size_t i = 0; i < count; ++i) put(" ", 1);
    }
    // Room for snprintf to write at the current end (0 once full).
    char *end() noexcept { return written_ < size_ ? buffer_ + written_ : nullptr; }
    size_t room() const noexcept { return written_ < size_ ? size_ - written_ : 0; }
    void advance(size_t length) noexcept { written_ += length; }
    int finish() noexcept
    {
        if (size_ > 0) buffer_[written_ < size_ ? written_ : size_ - 1] = '\0';
        return written_ > INT32_MAX ? -1 : static_cast<int>(written_);
    }
    size_t written() const noexcept { return written_; }

private:
    char *buffer_;
    size_t size_;
    size_t written_ = 0;
};

// Formats one conversion with its own argument through snprintf.
template <typename Value>
bool formatOne(Sink &sink, const char *text, int stars, const int *starValues, Value value) noexcept
{
    int length;
    // The text was taken from a format the caller vouched for.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    if (stars == 2)
        length = std::snprintf(sink.end(), sink.room(), text, starValues[0], starValues[1], value);
    else if (stars == 1)
        length = std::snprintf(sink.end(), sink.room(), text, starValues[0], value);
    else
        length = std::snprintf(sink.end(), sink.room(), text, value);
#pragma GCC diagnostic pop
    if (length < 0) return false;
    sink.advance(static_cast<size_t>(length));
    return true;
}

template <typename Signed, typename Unsigned>
bool formatInteger(Sink &sink, const Conversion &c, const char *text, int stars, const int *starValues,
                   va_list &args) noexcept
{
    const bool isSigned = c.type == 'd' || c.type == 'i';
    if (isSigned) return formatOne(sink, text, stars, starValues, va_arg(args, Signed));
    return formatOne(sink, text, stars, starValues, va_arg(args, Unsigned));
}

bool formatConversion(Sink &sink, const Conversion &c, va_list &args) noexcept
{
    int starValues[2] = {0, 0};
    int stars = 0;
    if (c.starWidth) starValues[stars++] = va_arg(args, int);
    if (c.starPrecision) starValues[stars++] = va_arg(args, int);

    if (c.type == 'p') {
        const PointerText text = pointerText(va_arg(args, void *));
        int width = 0;
        bool left = c.leftAlign;
        if (c.starWidth) {
            width = starValues[0];
            if (width < 0) {
                left = true;
                width = -width;
            }
        } else {
            const char *digits = c.start + 1 + std::strspn(c.start + 1, kFlags);
            while (*digits >= '0' && *digits <= '9') width = width * 10 + (*digits++ - '0');
        }
        const size_t padding = width > 16 ? static_cast<size_t>(width - 16) : 0;
        if (!left) sink.pad(padding);
        sink.put(text.text, 16);
        if (left) sink.pad(padding);
        return true;
    }
    if (c.type == 'n') {
        const size_t written = sink.written();
        switch (c.length) {
            case Length::hh:
                *va_arg(args, signed char *) = static_cast<signed char>(written);
                break;
            case Length::h:
                *va_arg(args, short *) = static_cast<short>(written);
                break;
            case Length::l:
                *va_arg(args, long *) = static_cast<long>(written);
                break;
            case Length::ll:
                *va_arg(args, long long *) = static_cast<long long>(written);
                break;
            case Length::j:
                *va_arg(args, intmax_t *) = static_cast<intmax_t>(written);
                break;
            case Length::z:
                *va_arg(args, size_t *) = written;
                break;
            case Length::t:
                *va_arg(args, ptrdiff_t *) = static_cast<ptrdiff_t>(written);
                break;
            default:
                *va_arg(args, int *) = static_cast<int>(written);
                break;
        }
        return true;
    }

    char text[64];
    const size_t textLength = static_cast<size_t>(c.end - c.start);
    if (textLength >= sizeof text) return false;
    std::memcpy(text, c.start, textLength);
    text[textLength] = '\0';

    switch (c.type) {
        case 'd':
        case 'i':
        case 'u':
        case 'o':
        case 'x':
        case 'X':
            switch (c.length) {
                case Length::l:
                    return formatInteger<long, unsigned long>(sink, c, text, stars, starValues, args);
                case Length::ll:
                    return formatInteger<long long, unsigned long long>(sink, c, text, stars, starValues,
                                                                        args);
                case Length::j:
                    return formatInteger<intmax_t, uintmax_t>(sink, c, text, stars, starValues, args);
                case Length::z:
                    return formatInteger<ptrdiff_t, size_t>(sink, c, text, stars, starValues, args);
                case Length::t:
                    return formatInteger<ptrdiff_t, size_t>(sink, c, text, stars, starValues, args);
                // hh and h arrive promoted to int; the conversion narrows them.
                default:
                    return formatInteger<int, unsigned>(sink, c, text, stars, starValues, args);
            }
        case 'c':
            if (c.length == Length::l)
                return formatOne(sink, text, stars, starValues, va_arg(args, PromotedWint));
            return formatOne(sink, text, stars, starValues, va_arg(args, int));
        case 's':
            if (c.length == Length::l)
                return formatOne(sink, text, stars, starValues, va_arg(args, const wchar_t *));
            return formatOne(sink, text, stars, starValues, va_arg(args, const char *));
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            if (c.length == Length::L)
                return formatOne(sink, text, stars, starValues, va_arg(args, long double));
            return formatOne(sink, text, stars, starValues, va_arg(args, double));
        default:
            return false;  // a conversion printf does not have
    }
}

}  // namespace

PointerText pointerText(const void *pointer) noexcept
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    PointerText out;
    auto value = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(pointer));
    for (int i = 15; i >= 0; --i) {
        out.text[i] = kDigits[value & 0xF];
        value >>= 4;
    }
    out.text[16] = '\0';
    return out;
}

int formatTextInto(char *buffer, size_t size, const char *format, ...) noexcept
{
    va_list args;
    va_start(args, format);
    const int length = formatText(buffer, size, format, args);
    va_end(args);
    return length;
}

int formatText(char *buffer, size_t size, const char *format, va_list args) noexcept
{
    if (!hasPointerConversion(format)) return std::vsnprintf(buffer, size, format, args);

    Sink sink(buffer, size);
    va_list walk;
    va_copy(walk, args);
    const char *at = format;
    bool ok = true;
    while (ok && *at != '\0') {
        const char *percent = std::strchr(at, '%');
        if (percent == nullptr) {
            sink.put(at, std::strlen(at));
            break;
        }
        sink.put(at, static_cast<size_t>(percent - at));
        if (percent[1] == '%') {
            sink.put("%", 1);
            at = percent + 2;
            continue;
        }
        Conversion conversion;
        ok = parseConversion(percent, &conversion) && formatConversion(sink, conversion, walk);
        if (ok) at = conversion.end;
    }
    va_end(walk);
    const int length = sink.finish();
    return ok ? length : -1;
}

}  // namespace tollan::services
