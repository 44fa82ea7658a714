#include "services/printf_conversion.h"

namespace tollan::services::formatting {
namespace {

bool isDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

// Reads a run of digits, saturating at kFieldLimit.
const char *readCount(const char *at, size_t &out) noexcept
{
    size_t value = 0;
    for (; isDigit(*at); ++at) {
        value = value * 10 + static_cast<size_t>(*at - '0');
        if (value > kFieldLimit) value = kFieldLimit;
    }
    out = value;
    return at;
}

const char *readFlags(const char *at, Conversion &out) noexcept
{
    for (;; ++at) {
        switch (*at) {
            case '-':
                out.leftAlign = true;
                break;
            case '+':
                out.plusSign = true;
                break;
            case ' ':
                out.spaceSign = true;
                break;
            case '#':
                out.alternate = true;
                break;
            case '0':
                out.zeroPad = true;
                break;
            case '\'':  // grouping: the C locale groups nothing
                break;
            default:
                return at;
        }
    }
}

bool startsWith(const char *at, char first, char second) noexcept
{
    return at[0] == first && at[1] == second;
}

const char *readSize(const char *at, ArgumentSize &out) noexcept
{
    switch (*at) {
        case 'h':
            out = at[1] == 'h' ? ArgumentSize::hh : ArgumentSize::h;
            return at + (at[1] == 'h' ? 2 : 1);
        case 'l':
            out = at[1] == 'l' ? ArgumentSize::ll : ArgumentSize::l;
            return at + (at[1] == 'l' ? 2 : 1);
        case 'j':
            out = ArgumentSize::j;
            return at + 1;
        case 'z':
            out = ArgumentSize::z;
            return at + 1;
        case 't':
            out = ArgumentSize::t;
            return at + 1;
        case 'L':
            out = ArgumentSize::L;
            return at + 1;
        case 'I':
            if (startsWith(at + 1, '3', '2')) {
                out = ArgumentSize::I32;
                return at + 3;
            }
            if (startsWith(at + 1, '6', '4')) {
                out = ArgumentSize::I64;
                return at + 3;
            }
            out = ArgumentSize::I;
            return at + 1;
        default:
            out = ArgumentSize::standard;
            return at;
    }
}

}  // namespace

const char *parseConversion(const char *percent, Conversion &out) noexcept
{
    const char *at = readFlags(percent + 1, out);
    if (*at == '*') {
        out.widthArgument = true;
        ++at;
    } else {
        at = readCount(at, out.width);
    }
    if (*at == '.') {
        out.hasPrecision = true;
        ++at;
        if (*at == '*') {
            out.precisionArgument = true;
            ++at;
        } else {
            at = readCount(at, out.precision);
        }
    }
    at = readSize(at, out.size);
    if (*at == '\0') return nullptr;
    out.type = *at;
    return at + 1;
}

bool isKnownConversion(char type) noexcept
{
    switch (type) {
        case 'd':
        case 'i':
        case 'o':
        case 'u':
        case 'x':
        case 'X':
        case 'c':
        case 's':
        case 'p':
        case 'n':
        case 'f':
        case 'F':
        case 'e':
        case 'E':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
        case '%':
            return true;
        default:
            return false;
    }
}

void applyWidthArgument(Conversion &conversion, int width) noexcept
{
    if (width < 0) conversion.leftAlign = true;
    // Through long long so that -INT_MIN has a magnitude.
    const long long magnitude = width < 0 ? -static_cast<long long>(width) : width;
    conversion.width = static_cast<size_t>(magnitude);
}

void applyPrecisionArgument(Conversion &conversion, int precision) noexcept
{
    conversion.hasPrecision = precision >= 0;
    conversion.precision = precision >= 0 ? static_cast<size_t>(precision) : 0;
}

}  // namespace tollan::services::formatting
