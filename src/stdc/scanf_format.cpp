#include "stdc/scanf_format.h"

#include <cstring>

#include "stdc/scanf_utf8.h"

namespace tollan::stdc {
namespace {

// Reads the size at `*at`, moving past it.
ScanSize parseSize(const char **at) noexcept
{
    struct Spelling {
        const char *text;
        ScanSize size;
    };
    // Longer spellings first, so that "hh" is not taken for "h".
    static constexpr Spelling kSpellings[] = {
        {"hh", ScanSize::hh},   {"h", ScanSize::h},     {"ll", ScanSize::ll}, {"l", ScanSize::l},
        {"j", ScanSize::j},     {"z", ScanSize::z},     {"t", ScanSize::t},   {"L", ScanSize::L},
        {"I32", ScanSize::I32}, {"I64", ScanSize::I64}, {"I", ScanSize::I},
    };
    for (const Spelling &spelling : kSpellings) {
        const size_t length = std::strlen(spelling.text);
        if (std::strncmp(*at, spelling.text, length) == 0) {
            *at += length;
            return spelling.size;
        }
    }
    return ScanSize::normal;
}

bool sizeFits(ScanSize size, char type) noexcept
{
    if (size == ScanSize::normal) return true;
    if (std::strchr("diouxXn", type) != nullptr) return size != ScanSize::L;
    if (std::strchr("aAeEfFgG", type) != nullptr) return size == ScanSize::l || size == ScanSize::L;
    if (std::strchr("cs[", type) != nullptr) return size == ScanSize::l;
    return false;
}

// Finds the end of the set that starts at `at` (after "[" or "[^"): a ']'
// first is a member. Null when the set has no closing ']'.
const char *findSetEnd(const char *at) noexcept
{
    if (*at == ']') ++at;
    return std::strchr(at, ']');
}

bool isUtf8(const char *begin, const char *end) noexcept
{
    char32_t ignored = 0;
    while (begin != end)
        if (!decodeUtf8(&begin, end, &ignored)) return false;
    return true;
}

}  // namespace

const char *parseScanConversion(const char *percent, ScanConversion *out) noexcept
{
    const char *at = percent + 1;
    *out = ScanConversion{};
    out->suppress = *at == '*';
    if (out->suppress) ++at;
    out->width = kNoWidth;
    if (*at == '0') return nullptr;
    if (*at >= '1' && *at <= '9') {
        size_t width = 0;
        // A width past any input is as good as none; it stops growing there.
        constexpr size_t kLargest = SIZE_MAX / 10 - 9;
        for (; *at >= '0' && *at <= '9'; ++at)
            if (width < kLargest) width = width * 10 + static_cast<size_t>(*at - '0');
        out->width = width;
    }
    out->size = parseSize(&at);
    out->type = *at;
    if (out->type == '\0' || std::strchr("diouxXaAeEfFgGscp[n%", out->type) == nullptr) return nullptr;
    if (!sizeFits(out->size, out->type)) return nullptr;
    const bool bare = !out->suppress && out->width == kNoWidth;
    if ((out->type == '%' || out->type == 'n') && !bare) return nullptr;
    ++at;
    if (out->type != '[') return at;
    out->setNegated = *at == '^';
    if (out->setNegated) ++at;
    out->setBegin = at;
    out->setEnd = findSetEnd(at);
    if (out->setEnd == nullptr) return nullptr;
    if (out->size == ScanSize::l && !isUtf8(out->setBegin, out->setEnd)) return nullptr;
    return out->setEnd + 1;
}

}  // namespace tollan::stdc
