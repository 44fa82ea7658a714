#include "services/printf_integer.h"

#include <cstring>

#include "services/text_format.h"

namespace tollan::services::formatting {
namespace {

// "00" to "99": decimal digits go two at a time.
constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// Writes the digits ending at `end`; returns where they start.
char *decimalDigits(char *end, uint64_t value) noexcept
{
    while (value >= 100) {
        const auto pair = static_cast<size_t>(value % 100) * 2;
        value /= 100;
        end -= 2;
        std::memcpy(end, kDigitPairs + pair, 2);
    }
    if (value >= 10) {
        end -= 2;
        std::memcpy(end, kDigitPairs + value * 2, 2);
    } else {
        *--end = static_cast<char>('0' + value);
    }
    return end;
}

char *powerOfTwoDigits(char *end, uint64_t value, unsigned bits, const char *digits) noexcept
{
    const uint64_t mask = (uint64_t{1} << bits) - 1;
    do {
        *--end = digits[value & mask];
        value >>= bits;
    } while (value != 0);
    return end;
}

char *digitsOf(char *end, uint64_t value, char type) noexcept
{
    switch (type) {
        case 'o':
            return powerOfTwoDigits(end, value, 3, "01234567");
        case 'x':
            return powerOfTwoDigits(end, value, 4, "0123456789abcdef");
        case 'X':
            return powerOfTwoDigits(end, value, 4, "0123456789ABCDEF");
        default:
            return decimalDigits(end, value);
    }
}

}  // namespace

bool putInteger(Output &out, const Conversion &conversion, uint64_t magnitude, bool negative) noexcept
{
    char digits[24];  // 22 octal digits of 64 bits
    char *const end = digits + sizeof digits;
    Field field;
    // An explicit precision of 0 prints no digit for 0.
    field.body = conversion.hasPrecision && conversion.precision == 0 && magnitude == 0
                     ? end
                     : digitsOf(end, magnitude, conversion.type);
    field.bodyLength = static_cast<size_t>(end - field.body);
    if (conversion.hasPrecision && conversion.precision > field.bodyLength)
        field.leadingZeros = conversion.precision - field.bodyLength;
    field.zeroFills = conversion.zeroPad && !conversion.hasPrecision;

    const char type = conversion.type;
    if (type == 'd' || type == 'i') {
        field.prefix = negative ? "-" : conversion.plusSign ? "+" : conversion.spaceSign ? " " : "";
        field.prefixLength = negative || conversion.plusSign || conversion.spaceSign ? 1 : 0;
    } else if (conversion.alternate && type == 'o') {
        // '#' makes the first digit a 0, raising the precision if it must.
        if (field.leadingZeros == 0 && (field.bodyLength == 0 || field.body[0] != '0'))
            field.leadingZeros = 1;
    } else if (conversion.alternate && magnitude != 0 && (type == 'x' || type == 'X')) {
        field.prefix = type == 'x' ? "0x" : "0X";
        field.prefixLength = 2;
    }
    return out.putField(field, conversion);
}

bool putPointer(Output &out, const Conversion &conversion, const void *pointer) noexcept
{
    const PointerText text = pointerText(pointer);
    Field field;
    field.body = text.text;
    field.bodyLength = sizeof text.text - 1;
    return out.putField(field, conversion);
}

}  // namespace tollan::services::formatting
