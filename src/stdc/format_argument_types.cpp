// The argument lists of printf and scanf formats, from the engines' parsers.
#include "stdc/format_argument_types.h"

#include <cstring>

#include "services/printf_conversion.h"
#include "stdc/scanf_format.h"

namespace tollan::stdc {
namespace {

using services::formatting::ArgumentSize;

// The signed and unsigned type of an integer conversion's size.
struct IntegerPair {
    ArgumentType isSigned;
    ArgumentType isUnsigned;
};

constexpr IntegerPair kInt{ArgumentType::Int, ArgumentType::UnsignedInt};
constexpr IntegerPair kChar{ArgumentType::SignedChar, ArgumentType::UnsignedChar};
constexpr IntegerPair kShort{ArgumentType::Short, ArgumentType::UnsignedShort};
constexpr IntegerPair kLong{ArgumentType::Long, ArgumentType::UnsignedLong};
constexpr IntegerPair kLongLong{ArgumentType::LongLong, ArgumentType::UnsignedLongLong};
constexpr IntegerPair kIntmax{ArgumentType::Intmax, ArgumentType::Uintmax};
constexpr IntegerPair kPointerSized{ArgumentType::Ptrdiff, ArgumentType::Size};

// The integer that a size names where the value is stored, not passed:
// through %n of either family and every scanf integer conversion. z, t and
// the pointer-sized I all name ptrdiff_t when signed and size_t when not
// (C leaves the signed twin of size_t and the unsigned one of ptrdiff_t
// unnamed).
IntegerPair storedInteger(ArgumentSize size) noexcept
{
    switch (size) {
        case ArgumentSize::hh:
            return kChar;
        case ArgumentSize::h:
            return kShort;
        case ArgumentSize::l:
            return kLong;
        case ArgumentSize::ll:
        case ArgumentSize::L:
        case ArgumentSize::I64:
            return kLongLong;
        case ArgumentSize::j:
            return kIntmax;
        case ArgumentSize::z:
        case ArgumentSize::t:
        case ArgumentSize::I:
            return kPointerSized;
        case ArgumentSize::standard:
        case ArgumentSize::I32:
            break;
    }
    return kInt;
}

// A passed value: char and short arrive promoted to int.
IntegerPair passedInteger(ArgumentSize size) noexcept
{
    return size == ArgumentSize::hh || size == ArgumentSize::h ? kInt : storedInteger(size);
}

bool isSignedConversion(char type) noexcept
{
    return type == 'd' || type == 'i' || type == 'n';
}

ArgumentType pick(IntegerPair pair, char type) noexcept
{
    return isSignedConversion(type) ? pair.isSigned : pair.isUnsigned;
}

// The argument of a printf conversion that the engine knows ('%' excluded).
FormatArgument printfValue(const services::formatting::Conversion &conversion) noexcept
{
    const char type = conversion.type;
    const bool wide = conversion.size == ArgumentSize::l;
    if (type == 'n') return {pick(storedInteger(conversion.size), type), 1};
    if (std::strchr("diouxX", type) != nullptr) return {pick(passedInteger(conversion.size), type), 0};
    if (type == 'c') return {ArgumentType::Int, 0};  // wint_t and char arrive as int
    if (type == 's') return {wide ? ArgumentType::WideChar : ArgumentType::Char, 1};
    if (type == 'p') return {ArgumentType::Void, 1};
    return {conversion.size == ArgumentSize::L ? ArgumentType::LongDouble : ArgumentType::Double, 0};
}

FormatStep nextPrintfArguments(const char **cursor, FormatArgument (&out)[kMostArgumentsPerConversion],
                               int *count) noexcept
{
    const char *percent = std::strchr(*cursor, '%');
    if (percent == nullptr) return FormatStep::end;
    services::formatting::Conversion conversion;
    const char *next = services::formatting::parseConversion(percent, conversion);
    if (next == nullptr) return FormatStep::end;
    *cursor = next;
    if (conversion.type == '%' || !services::formatting::isKnownConversion(conversion.type))
        return FormatStep::conversion;
    if (conversion.widthArgument) out[(*count)++] = {ArgumentType::Int, 0};
    if (conversion.precisionArgument) out[(*count)++] = {ArgumentType::Int, 0};
    out[(*count)++] = printfValue(conversion);
    return FormatStep::conversion;
}

// The scanf sizes in the printf engine's words, which storedInteger reads.
ArgumentSize asPrintfSize(ScanSize size) noexcept
{
    switch (size) {
        case ScanSize::hh:
            return ArgumentSize::hh;
        case ScanSize::h:
            return ArgumentSize::h;
        case ScanSize::l:
            return ArgumentSize::l;
        case ScanSize::ll:
            return ArgumentSize::ll;
        case ScanSize::j:
            return ArgumentSize::j;
        case ScanSize::z:
            return ArgumentSize::z;
        case ScanSize::t:
            return ArgumentSize::t;
        case ScanSize::L:
            return ArgumentSize::L;
        case ScanSize::I32:
            return ArgumentSize::I32;
        case ScanSize::I64:
            return ArgumentSize::I64;
        case ScanSize::I:
            return ArgumentSize::I;
        case ScanSize::normal:
            break;
    }
    return ArgumentSize::standard;
}

// Where a scanf conversion stores its field: every argument is a pointer.
FormatArgument scanfTarget(const ScanConversion &conversion) noexcept
{
    const char type = conversion.type;
    if (std::strchr("diouxXn", type) != nullptr)
        return {pick(storedInteger(asPrintfSize(conversion.size)), type), 1};
    if (std::strchr("cs[", type) != nullptr)
        return {conversion.size == ScanSize::l ? ArgumentType::WideChar : ArgumentType::Char, 1};
    if (type == 'p') return {ArgumentType::Void, 2};
    if (conversion.size == ScanSize::L) return {ArgumentType::LongDouble, 1};
    return {conversion.size == ScanSize::l ? ArgumentType::Double : ArgumentType::Float, 1};
}

FormatStep nextScanfArguments(const char **cursor, FormatArgument (&out)[kMostArgumentsPerConversion],
                              int *count) noexcept
{
    const char *percent = std::strchr(*cursor, '%');
    if (percent == nullptr) return FormatStep::end;
    ScanConversion conversion{};
    const char *next = parseScanConversion(percent, &conversion);
    if (next == nullptr) return FormatStep::malformed;
    *cursor = next;
    if (conversion.type != '%' && !conversion.suppress) out[(*count)++] = scanfTarget(conversion);
    return FormatStep::conversion;
}

}  // namespace

FormatStep nextFormatArguments(const char **cursor, FormatFamily family,
                               FormatArgument (&out)[kMostArgumentsPerConversion], int *count) noexcept
{
    *count = 0;
    if (cursor == nullptr || *cursor == nullptr) return FormatStep::end;
    return family == FormatFamily::printf ? nextPrintfArguments(cursor, out, count)
                                          : nextScanfArguments(cursor, out, count);
}

}  // namespace tollan::stdc
