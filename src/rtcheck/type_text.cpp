// The directives of the type printer's formatter.
#include "rtcheck/type_text.h"

#include <cstdarg>
#include <cstdio>

namespace tollan::rtcheck {
namespace {

void put(TypeText &out, char c) noexcept
{
    if (out.length < out.room) out.buffer[out.length] = c;
    ++out.length;
}

void putText(TypeText &out, const char *text) noexcept
{
    if (text == nullptr) text = "(null)";
    while (*text != '\0') put(out, *text++);
}

void putNumber(TypeText &out, unsigned long long value) noexcept
{
    char digits[24];
    std::snprintf(digits, sizeof digits, "%llu", value);
    putText(out, digits);
}

void putCoordinate(TypeText &out, const TyCoordinate *where) noexcept
{
    if (where == nullptr) return;
    if (where->file != nullptr) {
        putText(out, where->file);
        put(out, ':');
    }
    putNumber(out, where->line);
}

}  // namespace

void say(TypeText &out, const char *format, ...) noexcept
{
    va_list args;
    va_start(args, format);
    for (const char *p = format; *p != '\0'; ++p) {
        if (*p != '%') {
            put(out, *p);
            continue;
        }
        switch (*++p) {
            case 'k':
                putText(out, tokenrep(va_arg(args, int32_t)));
                break;
            case 't':
                sayType(out, va_arg(args, const Tynode *));
                break;
            case 's':
                putText(out, va_arg(args, const char *));
                break;
            case 'w':
                putCoordinate(out, va_arg(args, const TyCoordinate *));
                break;
            case 'l':  // %llu, the one long directive
                p += 2;
                putNumber(out, va_arg(args, unsigned long long));
                break;
            case '\0':
                --p;
                break;
            default:
                put(out, *p);
                break;
        }
    }
    va_end(args);
}

}  // namespace tollan::rtcheck
