#include "stdc/scanf_float_text.h"

namespace tollan::stdc {
namespace {

// An exponent's digits stop counting here: far past any type's range, and
// far from overflowing once the digits' own scale is added.
constexpr int64_t kExponentLimit = INT64_C(1000000000000000);

int lowerAscii(int byte) noexcept
{
    return byte >= 'A' && byte <= 'Z' ? byte - 'A' + 'a' : byte;
}

bool isDecimalDigit(int byte) noexcept
{
    return byte >= '0' && byte <= '9';
}

bool isNanCharacter(int byte) noexcept
{
    const int lower = lowerAscii(byte);
    return byte == '_' || isDecimalDigit(byte) || (lower >= 'a' && lower <= 'z');
}

// A digit's value in `base` (10 or 16); -1 for a byte that is none.
int digitValue(int byte, int base) noexcept
{
    if (isDecimalDigit(byte)) return byte - '0';
    const int lower = lowerAscii(byte);
    if (base == 16 && lower >= 'a' && lower <= 'f') return lower - 'a' + 10;
    return -1;
}

// The form stopped at `byte` before it was complete: the byte stays unread.
ScanOutcome stopShort(ScanField &field, int byte) noexcept
{
    if (byte >= 0) field.giveBack(byte);
    return field.failure();
}

// Matches the rest of `word` (lower case), case-insensitively.
bool matchWord(ScanField &field, const char *word, int *stoppedAt) noexcept
{
    for (; *word != '\0'; ++word) {
        const int byte = field.next();
        if (lowerAscii(byte) != *word) {
            *stoppedAt = byte;
            return false;
        }
    }
    return true;
}

// After the 'i': "nf", then "inity" or nothing.
ScanOutcome readInfinity(ScanField &field, FloatText *out) noexcept
{
    out->kind = FloatText::Kind::infinity;
    int stoppedAt = -1;
    if (!matchWord(field, "nf", &stoppedAt)) return stopShort(field, stoppedAt);
    const int byte = field.next();
    if (lowerAscii(byte) != 'i') {
        if (byte >= 0) field.giveBack(byte);
        return ScanOutcome::done;
    }
    if (!matchWord(field, "nity", &stoppedAt)) return stopShort(field, stoppedAt);
    return ScanOutcome::done;
}

// After the 'n': "an", then nothing or a '(' with letters, digits and '_'
// up to a ')'.
ScanOutcome readNan(ScanField &field, FloatText *out) noexcept
{
    out->kind = FloatText::Kind::nan;
    int stoppedAt = -1;
    if (!matchWord(field, "an", &stoppedAt)) return stopShort(field, stoppedAt);
    int byte = field.next();
    if (byte != '(') {
        if (byte >= 0) field.giveBack(byte);
        return ScanOutcome::done;
    }
    do {
        byte = field.next();
    } while (isNanCharacter(byte));
    return byte == ')' ? ScanOutcome::done : stopShort(field, byte);
}

// Reads the exponent's optional sign and digits after its 'e' or 'p' into
// *exponent, leaving *byte at the byte after them.
bool readExponent(ScanField &field, int *byte, int64_t *exponent) noexcept
{
    *byte = field.next();
    const bool negative = *byte == '-';
    if (*byte == '+' || *byte == '-') *byte = field.next();
    if (!isDecimalDigit(*byte)) return false;
    for (; isDecimalDigit(*byte); *byte = field.next())
        if (*exponent < kExponentLimit) *exponent = *exponent * 10 + (*byte - '0');
    if (negative) *exponent = -*exponent;
    return true;
}

}  // namespace

ScanOutcome readFloatText(ScanField &field, FloatText *out) noexcept
{
    int byte = field.next();
    if (byte == '+' || byte == '-') {
        out->negative = byte == '-';
        byte = field.next();
    }
    if (lowerAscii(byte) == 'i') return readInfinity(field, out);
    if (lowerAscii(byte) == 'n') return readNan(field, out);
    bool anyDigit = false;
    if (byte == '0') {
        byte = field.next();
        if (lowerAscii(byte) == 'x') {
            out->hexadecimal = true;
            byte = field.next();
        } else {
            anyDigit = true;
        }
    }
    const int base = out->hexadecimal ? 16 : 10;
    bool afterPoint = false;
    bool droppedNonzero = false;
    int64_t scale = 0;  // in digits of the base: the value is digits * base^scale
    for (;; byte = field.next()) {
        if (byte == '.' && !afterPoint) {
            afterPoint = true;
            continue;
        }
        const int digit = digitValue(byte, base);
        if (digit < 0) break;
        anyDigit = true;
        if (out->count == 0 && digit == 0) {
            if (afterPoint) --scale;
        } else if (out->count < kKeptDigits) {
            out->digits[out->count++] = static_cast<char>(byte);
            if (afterPoint) --scale;
        } else {
            droppedNonzero = droppedNonzero || digit != 0;
            if (!afterPoint) ++scale;
        }
    }
    if (!anyDigit) return stopShort(field, byte);
    if (droppedNonzero) {
        out->digits[out->count++] = '1';
        --scale;
    }
    int64_t exponent = 0;
    if (lowerAscii(byte) == (out->hexadecimal ? 'p' : 'e') && !readExponent(field, &byte, &exponent))
        return stopShort(field, byte);
    if (byte >= 0) field.giveBack(byte);
    out->exponent = (out->hexadecimal ? 4 * scale : scale) + exponent;
    return ScanOutcome::done;
}

}  // namespace tollan::stdc
