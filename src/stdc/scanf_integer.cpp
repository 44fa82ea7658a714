#include "stdc/scanf_integer.h"

#include "stdc/scanf_arguments.h"

#include <cerrno>
#include <cstring>
#include <cstddef>
#include <type_traits>

namespace tollan::stdc {
namespace {

// A digit's value in any base up to 16; 16 for a byte that is no digit.
int digitValue(int byte) noexcept
{
    if (byte >= '0' && byte <= '9') return byte - '0';
    if (byte >= 'a' && byte <= 'f') return byte - 'a' + 10;
    if (byte >= 'A' && byte <= 'F') return byte - 'A' + 10;
    return 16;
}

struct IntegerText {
    bool negative = false;
    uint64_t magnitude = 0;
    bool tooLarge = false;  // the magnitude passed 64 bits
};

// Reads an optional sign and the digits of `base` (0: the prefix decides;
// 16: an optional 0x or 0X). The byte after the number stays unread; a
// "0x" without a hexadecimal digit after it is a matching failure.
ScanOutcome readInteger(ScanField &field, int base, IntegerText *out) noexcept
{
    int byte = field.next();
    if (byte == '+' || byte == '-') {
        out->negative = byte == '-';
        byte = field.next();
    }
    bool anyDigit = false;
    if ((base == 0 || base == 16) && byte == '0') {
        byte = field.next();
        if (byte == 'x' || byte == 'X') {
            base = 16;
            byte = field.next();
        } else {
            anyDigit = true;
            if (base == 0) base = 8;
        }
    }
    if (base == 0) base = 10;
    const auto unsignedBase = static_cast<uint64_t>(base);
    for (; digitValue(byte) < base; byte = field.next()) {
        const auto digit = static_cast<uint64_t>(digitValue(byte));
        anyDigit = true;
        if (out->magnitude > (UINT64_MAX - digit) / unsignedBase)
            out->tooLarge = true;
        else
            out->magnitude = out->magnitude * unsignedBase + digit;
    }
    if (byte >= 0) field.giveBack(byte);
    return anyDigit ? ScanOutcome::done : field.failure();
}

// The 64-bit value as strtoimax (isSigned) or strtoumax give it, as bits.
uint64_t valueOf(const IntegerText &text, bool isSigned) noexcept
{
    constexpr uint64_t kLargestSigned = INT64_MAX;
    if (!isSigned && text.tooLarge) {
        errno = ERANGE;
        return UINT64_MAX;
    }
    if (isSigned && (text.tooLarge || text.magnitude > kLargestSigned + (text.negative ? 1 : 0))) {
        errno = ERANGE;
        return text.negative ? kLargestSigned + 1 : kLargestSigned;
    }
    return text.negative ? 0 - text.magnitude : text.magnitude;
}

template <typename Signed>
void storeAs(ScanArguments &arguments, bool isSigned, uint64_t bits) noexcept
{
    using Unsigned = std::make_unsigned_t<Signed>;
    if (isSigned)
        *arguments.next<Signed>() = static_cast<Signed>(bits);
    else
        *arguments.next<Unsigned>() = static_cast<Unsigned>(bits);
}

}  // namespace

void storeInteger(ScanArguments &arguments, ScanSize size, bool isSigned, uint64_t bits) noexcept
{
    switch (size) {
        case ScanSize::hh:
            return storeAs<signed char>(arguments, isSigned, bits);
        case ScanSize::h:
            return storeAs<short>(arguments, isSigned, bits);
        case ScanSize::l:
            return storeAs<long>(arguments, isSigned, bits);
        case ScanSize::ll:
            return storeAs<long long>(arguments, isSigned, bits);
        case ScanSize::j:
            return storeAs<intmax_t>(arguments, isSigned, bits);
        case ScanSize::z:
            return storeAs<std::make_signed_t<size_t>>(arguments, isSigned, bits);
        case ScanSize::t:
            return storeAs<ptrdiff_t>(arguments, isSigned, bits);
        case ScanSize::I32:
            return storeAs<int32_t>(arguments, isSigned, bits);
        case ScanSize::I64:
            return storeAs<int64_t>(arguments, isSigned, bits);
        case ScanSize::I:
            return storeAs<intptr_t>(arguments, isSigned, bits);
        case ScanSize::normal:
        case ScanSize::L:
            break;  // L never reaches here: the format parser refuses it
    }
    storeAs<int>(arguments, isSigned, bits);
}

ScanOutcome scanInteger(ScanInput &input, const ScanConversion &conversion, ScanArguments &arguments) noexcept
{
    if (!input.skipWhiteSpace()) return ScanOutcome::inputFailure;
    int base = 16;
    if (conversion.type == 'd' || conversion.type == 'u') base = 10;
    if (conversion.type == 'i') base = 0;
    if (conversion.type == 'o') base = 8;
    const bool isSigned = conversion.type == 'd' || conversion.type == 'i';
    ScanField field(input, conversion.width);
    IntegerText text;
    const ScanOutcome outcome = readInteger(field, base, &text);
    if (outcome != ScanOutcome::done || conversion.suppress) return outcome;
    const uint64_t bits = valueOf(text, isSigned);
    if (conversion.type != 'p') {
        storeInteger(arguments, conversion.size, isSigned, bits);
        return ScanOutcome::done;
    }
    // Stored as its bits: a cast from an integer would hide where the
    // pointer came from from the optimiser.
    const auto address = static_cast<uintptr_t>(bits);
    static_assert(sizeof address == sizeof(void *));
    std::memcpy(arguments.next<void *>(), &address, sizeof address);
    return ScanOutcome::done;
}

}  // namespace tollan::stdc
