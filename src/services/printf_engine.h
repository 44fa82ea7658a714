// The library's printf engine: C99's printf conversions with the size
// prefixes of Windows (%I, %I32, %I64), done by the library itself so that
// TOLLAN.dll and libtollan.so print every value alike. Floating point goes
// through std::to_chars (correctly rounded, locale-free); %p prints the
// library's one pointer form (pointerText in text_format.h).
//
// The text goes to a sink in pieces; the C library's printf family, the
// library's own texts and snprintf-style buffers all sit on this one engine.
//
// The language, as this engine reads it:
//
//   %[flags][width][.precision][size]conversion
//
// - Flags, in any order and repeated: '-' left-aligns in the width (and
//   beats '0'); '+' signs positive values (and beats ' '); ' ' puts a space
//   before a positive value; '#' is the alternate form (0 before octal, 0x
//   before non-zero hex, a point that always shows and, for g, the trailing
//   zeros kept); '0' pads numbers with zeros after the sign and "0x" (not
//   for integers with a precision, nor for inf and nan, nor for c s p).
//   '\'' is accepted and does nothing: the library is locale-free, and the C
//   locale groups no digits.
// - Width and precision: digits, or '*' for an int argument fetched before
//   the value (width first). A negative '*' width means '-' and its
//   magnitude; a negative '*' precision counts as none. '.' alone is
//   precision 0. Digits past INT_MAX stop counting just above it, so such a
//   width always overflows the text.
// - Sizes: hh h l ll j z t as C99 (l is the compiler's long: 32 bits under
//   mingw, 64 on Linux); L is long double on the floating conversions; on
//   d i o u x X and n, L means long long, I the pointer size (64 bits), I32
//   and I64 those widths. The size l on c and s means wide; any other size
//   on c s p, and any but L on the floating conversions, is ignored.
// - d i o u x X: as C99, a precision being the least number of digits (0
//   with precision 0 prints no digit). hh and h wrap the value to their type.
// - f F e E g G: as C99, rounded correctly from the binary value (ties to
//   even), the same digits on every platform. Infinity prints "inf" or
//   "INF", a NaN "nan" or "NAN", each with '-' when its sign bit is set
//   ("-nan") and with '+' or ' ' as the flags say. -0.0 prints "-0".
// - a A: "0x" (or "0X"), the hex digits std::to_chars gives and the binary
//   exponent as C writes it: 1.0 is "0x1p+0", 3.0 is "0x1.8p+1"; without a
//   precision, exactly the digits the value needs; with one, rounded (ties
//   to even). A double's subnormal keeps a leading 0 and the exponent -1022
//   (the smallest is "0x0.0000000000001p-1022"); a long double (the 80-bit
//   x87 form, under mingw too) leads with its explicit integer bit, so 1.0L
//   is "0x8p-3".
// - c: the int as unsigned char; with l, the wint_t in UTF-8.
// - s: the bytes up to the terminator or the precision, whichever comes
//   first; none past the precision is read. With l, a wchar_t string
//   (UTF-16 under mingw, surrogate pairs joined; UTF-32 on Linux) in UTF-8,
//   the precision counting bytes written and never splitting a character;
//   no wide character past what the precision lets through is read. A null
//   pointer prints "(null)", cut by the precision like any string.
// - A wide character with no UTF-8 form (a lone surrogate, a value past
//   U+10FFFF) ends the text with -1 and errno EILSEQ; its field is not
//   written, what came before may have been.
// - p: 16 upper-case hex digits, no prefix (pointerText); null prints
//   "0000000000000000". Width and '-' apply; other flags and a precision
//   do not.
// - n: stores the length so far through a pointer of its size's signed type
//   (int without a size; hh signed char ... z the signed size_t, I32
//   int32_t, I64 and I 64 bits); writes nothing.
// - %%: a '%'. Whatever stands between the two is ignored and no argument
//   is fetched, even for '*'.
// - Anything else: a conversion character the engine does not know is
//   written out as it stands from its '%' ("%y", "%5k", "%1$d"), and a
//   format that ends inside a conversion ("50%", "%-5") ends with it
//   written as it stands. Neither fetches an argument, '*' included.
//
// The engine allocates no memory for the text except the digits of a long
// double conversion that need more than 1.5 KB (say %.2000Lf); those come
// from the library heap, and errno ENOMEM with -1 when it has none. It
// reads no locale, calls no host printf and keeps no state: any number of
// threads may format at once.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace tollan::services {

// Where formatted text goes.
class TextSink {
public:
    // Takes the next piece of the text (length > 0). False when the
    // destination failed: formatting stops at once and reports -1, leaving
    // errno as the sink set it. The engine hands over each literal run of
    // the format whole, each field in a few pieces (sign, digits, exponent)
    // and padding in blocks of up to 128 bytes.
    virtual bool put(const char *text, size_t length) noexcept = 0;

protected:
    TextSink() = default;
    TextSink(const TextSink &) = default;
    TextSink &operator=(const TextSink &) = default;
    ~TextSink() = default;
};

// Formats `format` with `arguments` into `sink`. Returns the length of the
// whole text, or -1 when the sink failed, when the length would pass
// INT_MAX (errno EOVERFLOW; the piece that would pass it is not handed to
// the sink) or when a wide character cannot be encoded (errno EILSEQ).
// `arguments` is consumed as vprintf consumes it.
int printFormatted(TextSink &sink, const char *format, va_list arguments) noexcept;

// vsnprintf's contract on the engine: writes at most size bytes of the text
// into buffer (terminated when size > 0; buffer may be null when size is 0)
// and returns the length of the whole text, or -1 as printFormatted, with
// what was written before the failure terminated.
int printToBuffer(char *buffer, size_t size, const char *format, va_list arguments) noexcept;

}  // namespace tollan::services
