// The directives of the type printer's formatter.
#include "rtcheck/type_text.h"

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

void sayWith(TypeText &out, const char *format, std::initializer_list<TextArgument> arguments) noexcept
{
    const TextArgument *next = arguments.begin();
    auto take = [&next, &arguments](TextArgument::Kind kind) -> const TextArgument * {
        if (next == arguments.end() || next->kind != kind) return nullptr;
        return next++;
    };
    for (const char *p = format; *p != '\0'; ++p) {
        if (*p != '%') {
            put(out, *p);
            continue;
        }
        switch (*++p) {
            case 'k':
                if (const TextArgument *a = take(TextArgument::Kind::token)) putText(out, tokenrep(a->token));
                break;
            case 't':
                if (const TextArgument *a = take(TextArgument::Kind::type)) sayType(out, a->type);
                break;
            case 's':
                if (const TextArgument *a = take(TextArgument::Kind::text)) putText(out, a->text);
                break;
            case 'w':
                if (const TextArgument *a = take(TextArgument::Kind::coordinate))
                    putCoordinate(out, a->coordinate);
                break;
            case 'l':  // %llu, the one long directive
                p += 2;
                if (const TextArgument *a = take(TextArgument::Kind::number)) putNumber(out, a->number);
                break;
            case '\0':
                --p;
                break;
            default:
                put(out, *p);
                break;
        }
    }
}

}  // namespace tollan::rtcheck
