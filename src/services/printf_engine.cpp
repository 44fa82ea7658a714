#include "services/printf_engine.h"

#include <cstdint>
#include <cstring>
#include <iterator>
#include <cwchar>
#include <type_traits>

#include "services/printf_conversion.h"
#include "services/printf_float.h"
#include "services/printf_integer.h"
#include "services/printf_output.h"
#include "services/printf_text.h"

namespace tollan::services {
namespace {

using formatting::ArgumentSize;
using formatting::Conversion;
using formatting::Output;

// A wide character as it travels through "...": Windows' 16-bit wint_t
// arrives promoted to int.
using PromotedWint = std::conditional_t<(sizeof(wint_t) < sizeof(int)), int, wint_t>;

struct Integer {
    uint64_t magnitude;
    bool negative;
};

template <typename Signed>
Integer readSigned(va_list &arguments) noexcept
{
    using Travelling = std::conditional_t<(sizeof(Signed) < sizeof(int)), int, Signed>;
    long long value = va_arg(arguments, Travelling);
    if constexpr (sizeof(Signed) < sizeof(int)) {
        // hh and h arrive promoted to int and wrap to their own width: the
        // low bits, the top one of them the sign.
        constexpr long long kSign = 1LL << (8 * sizeof(Signed) - 1);
        value = ((value & (2 * kSign - 1)) ^ kSign) - kSign;
    }
    // Negated as unsigned so that the smallest value has a magnitude too.
    const auto bits = static_cast<uint64_t>(value);
    return {value < 0 ? 0 - bits : bits, value < 0};
}

template <typename Unsigned>
uint64_t readUnsigned(va_list &arguments) noexcept
{
    using Travelling = std::conditional_t<(sizeof(Unsigned) < sizeof(int)), unsigned, Unsigned>;
    return static_cast<Unsigned>(va_arg(arguments, Travelling));
}

// %n: the text's length so far, through a pointer of the size's type.
template <typename Signed>
void storeCount(va_list &arguments, size_t count) noexcept
{
    *va_arg(arguments, Signed *) = static_cast<Signed>(count);
}

// How the integer arguments of one size are read and %n stored.
struct SizeAccess {
    Integer (*readSigned)(va_list &) noexcept;
    uint64_t (*readUnsigned)(va_list &) noexcept;
    void (*storeCount)(va_list &, size_t) noexcept;
};

template <typename Signed, typename Unsigned>
constexpr SizeAccess accessOf()
{
    return {readSigned<Signed>, readUnsigned<Unsigned>, storeCount<Signed>};
}

// Indexed by ArgumentSize.
constexpr SizeAccess kSizeAccess[] = {
    accessOf<int, unsigned>(),                               // standard
    accessOf<signed char, unsigned char>(),                  // hh
    accessOf<short, unsigned short>(),                       // h
    accessOf<long, unsigned long>(),                         // l
    accessOf<long long, unsigned long long>(),               // ll
    accessOf<intmax_t, uintmax_t>(),                         // j
    accessOf<std::make_signed_t<size_t>, size_t>(),          // z
    accessOf<ptrdiff_t, std::make_unsigned_t<ptrdiff_t>>(),  // t
    accessOf<long long, unsigned long long>(),               // L (on integers)
    accessOf<intptr_t, uintptr_t>(),                         // I
    accessOf<int32_t, uint32_t>(),                           // I32
    accessOf<int64_t, uint64_t>(),                           // I64
};
static_assert(std::size(kSizeAccess) == static_cast<size_t>(ArgumentSize::I64) + 1);

const SizeAccess &accessFor(ArgumentSize size) noexcept
{
    return kSizeAccess[static_cast<size_t>(size)];
}

// Fetches what a known conversion takes ('*' values first) and writes it.
bool putConversion(Output &out, Conversion &conversion, va_list &arguments) noexcept
{
    if (conversion.type == '%') return out.put("%", 1);
    if (conversion.widthArgument) formatting::applyWidthArgument(conversion, va_arg(arguments, int));
    if (conversion.precisionArgument) formatting::applyPrecisionArgument(conversion, va_arg(arguments, int));
    const bool wide = conversion.size == ArgumentSize::l;
    switch (conversion.type) {
        case 'd':
        case 'i': {
            const Integer value = accessFor(conversion.size).readSigned(arguments);
            return putInteger(out, conversion, value.magnitude, value.negative);
        }
        case 'o':
        case 'u':
        case 'x':
        case 'X':
            return putInteger(out, conversion, accessFor(conversion.size).readUnsigned(arguments), false);
        case 'c':
            if (wide)
                return putWideCharacter(out, conversion,
                                        static_cast<wint_t>(va_arg(arguments, PromotedWint)));
            return putCharacter(out, conversion, va_arg(arguments, int));
        case 's':
            if (wide) return putWideString(out, conversion, va_arg(arguments, const wchar_t *));
            return putString(out, conversion, va_arg(arguments, const char *));
        case 'p':
            return putPointer(out, conversion, va_arg(arguments, const void *));
        case 'n':
            accessFor(conversion.size).storeCount(arguments, out.count());
            return true;
        default:  // the floating conversions
            if (conversion.size == ArgumentSize::L)
                return putFloat(out, conversion, va_arg(arguments, long double));
            return putFloat(out, conversion, va_arg(arguments, double));
    }
}

bool printAll(Output &out, const char *format, va_list &arguments) noexcept
{
    for (const char *at = format;;) {
        const char *percent = std::strchr(at, '%');
        if (percent == nullptr) return out.put(at, std::strlen(at));
        if (!out.put(at, static_cast<size_t>(percent - at))) return false;
        Conversion conversion;
        const char *next = formatting::parseConversion(percent, conversion);
        // A format that ends inside a conversion ends with it as it stands.
        if (next == nullptr) return out.put(percent, std::strlen(percent));
        const bool written = formatting::isKnownConversion(conversion.type)
                                 ? putConversion(out, conversion, arguments)
                                 : out.put(percent, static_cast<size_t>(next - percent));
        if (!written) return false;
        at = next;
    }
}

}  // namespace

int printFormatted(TextSink &sink, const char *format, va_list arguments) noexcept
{
    Output out(sink);
    // A copy of its own, which (unlike the parameter, whose type va_list may
    // have decayed) can be handed on by reference.
    va_list walk;
    va_copy(walk, arguments);
    const bool written = printAll(out, format, walk);
    va_end(walk);
    return written ? static_cast<int>(out.count()) : -1;
}

}  // namespace tollan::services
