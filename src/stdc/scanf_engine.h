// The C library's scanf engine: C99's scanf conversions, with the size
// prefixes of Windows (%I, %I32, %I64) beside C99's, done by the library
// itself so that both builds read every text alike. Floating point is
// correctly rounded and locale-free: float and double through
// std::from_chars, long double through the library's own exact reader.
//
// THE FORMAT
// A format is a sequence of directives:
// - White space (' ', '\t', '\n', '\v', '\f', '\r'; any run of it counts as
//   one directive) reads white space from the input up to the first other
//   byte, which stays unread; none at all is fine too.
// - An ordinary byte must be the next byte of the input. A different byte is
//   a matching failure and stays unread.
// - A conversion: '%', an optional '*' (read the field but store nothing and
//   take no argument), an optional field width (a decimal number that does
//   not start with 0: at most that many bytes go into the field), an
//   optional size and a conversion character.
//
// Sizes: hh (char), h (short), l (long; wchar_t for c, s and [; double for
// the floating conversions), ll (long long), j (intmax_t), z (size_t), t
// (ptrdiff_t), L (long double) and Windows' I32 (32 bits), I64 (64 bits) and
// I (pointer-sized: 64 bits in both builds). hh, h, ll, j, z, t, I32, I64
// and I go with d i o u x X n only; l also with a e f g (and upper-case
// forms), c, s and [; L only with the floating conversions.
//
// Conversions (every one but c, [ and n first skips white space):
//   d      decimal integer with optional sign, into int (or the size's type).
//   i      integer whose base follows its prefix: 0x or 0X hexadecimal, 0
//          octal, otherwise decimal.
//   o u x X  octal, decimal, hexadecimal (x and X take an optional 0x or 0X)
//          into unsigned int (or the size's unsigned type).
//   a e f g A E F G  a floating-point number as strtod reads it: optional
//          sign, then decimal digits with an optional point and an optional
//          exponent (e, E), or 0x/0X and hexadecimal digits with an optional
//          point and an optional binary exponent (p, P, decimal digits), or
//          "inf", "infinity", "nan" or "nan(" letters, digits and '_' ")"
//          in any case. Into float; l double; L long double.
//   s      a run of non-white-space bytes, stored with a terminating '\0'.
//   c      exactly `width` bytes (1 when there is no width), with no
//          terminator and no white-space skip; %lc without a width reads
//          one character, however many bytes it has.
//   [      a run of bytes of a set: "[abc]" takes a, b and c; "[^abc]" every
//          byte but those; a ']' right after '[' or "[^" is a member, not
//          the end. A '-' between two members x and y with x <= y stands for
//          every byte from x to y by value ("[a-z0-9_]"); a '-' that comes
//          first or last, right after a range ("[a-c-e]": a to c, '-', 'e'),
//          or between x > y ("[z-a]": z, '-', a) stands for itself. Stored
//          with a terminating '\0'.
//   p      a pointer as the library's printf writes it (16 upper-case
//          hexadecimal digits); read as %x reads, so "0x" and lower case do
//          too. Into void *.
//   n      stores the number of bytes read from the source so far by this
//          call; reads nothing and does not count as an item.
//   %      "%%" skips white space and then matches a '%'; no conversion.
//
// Numbers that do not fit:
// - Integers are read as strtoimax (d, i) or strtoumax (o, u, x, X, p) read
//   them: a magnitude past the 64-bit range stores INT64_MAX, INT64_MIN or
//   UINT64_MAX and sets errno to ERANGE; '-'
//   is accepted by the unsigned conversions and negates modulo 2^64, as
//   strtoull does. The 64-bit value is then cut to the target's width
//   (modulo 2^bits): "%hhd" of "300" stores 44, "%hhu" of "-1" stores 255.
// - Floating point: a value past the type's largest stores +-infinity
//   (HUGE_VAL, HUGE_VALF, HUGE_VALL) and a nonzero value that rounds to zero
//   stores +-0, both with errno ERANGE. A value that rounds to a denormal is
//   stored as that denormal without ERANGE. Every value is rounded to
//   nearest, ties to even. The digits of "nan(...)" are read and ignored:
//   the value is the type's default quiet NaN, negative after a '-'.
// - A suppressed conversion stores nothing and sets no ERANGE.
// - A number needs all of its form: a field that stops inside one ("0x",
//   "1e", "1e+", "-", "+.", "infin", "nan(ab") is a matching failure, and
//   the bytes read stay read (the source gives back one byte only):
//   "%f" of "100ergs" fails, having read "100e". Where the form is already
//   complete the rest stays unread: "%f" of "infx" reads infinity and leaves
//   "x", "%d" of "12ab" reads 12 and leaves "ab".
//
// Wide characters (%lc, %ls, %l[): the input's bytes are read as UTF-8 and
// stored as wchar_t (UTF-16 with surrogate pairs where wchar_t has 16 bits,
// code points where it has 32). A field width counts bytes, not
// characters; the destination needs room for `width` wchar_t (plus the
// terminator for %ls and %l[), or 2 for a %lc without a width. A character
// that does not fit the rest of the width ends a %ls or %l[ field and stays
// unread; in a %lc with a width it is a matching failure. A byte sequence that is not UTF-8 (a stray
// continuation byte, a cut or overlong sequence, a surrogate, beyond U+10FFFF) is a matching failure with
// errno EILSEQ. Only ASCII white space is white space. A %l[ set is read from the format as UTF-8 too (a
// format whose set is not UTF-8 is malformed) and its ranges go by code point. A character ends a %l[ field
// when it is not in the set; when every character that starts with the same byte is in the set, or none is,
// the first byte decides and a character outside the set stays unread. When only some are (the set "[a-zé]"
// and the input "è"), the whole character has to be read to be tested, and if it then is outside the set it
// cannot be given back: the directive fails as a matching failure.
//
// Long double: %Lf and its kind go through the library's own exact reader
// (big-integer arithmetic, correctly rounded), because std::from_chars for
// long double is exact in neither build: mingw-w64's reads through double
// (precision and range), and libstdc++'s on Linux drops denormals that are
// not exact. Both builds then read a long double alike.
//
// Long texts: 800 significant digits are kept, and the digits past them
// count as one nonzero digit if any of them is not 0. That rounds exactly
// as the whole text would for float and double at any length (no value
// halfway between two doubles has more than 768 significant digits), and
// for long double between about 1e-316 and 1e799; outside that span, a
// long double text of more than 800 significant digits can come out one
// unit in the last place off.
//
// THE RESULT
// scanFormatted returns the number of items stored (%n and suppressed
// conversions are not items). It stops at the first failure:
// - A matching failure (the input does not fit the directive) returns the
//   count so far.
// - An input failure (the source ended or failed where a directive needed
//   a byte, before the field had one) returns -1 (EOF) when no conversion
//   (suppressed ones included, %n not) has completed yet, and the count so
//   far otherwise. "%d" of "" or of "   " returns -1; "%d" of "-" is a
//   matching failure and returns 0.
// - A malformed format (it ends inside a conversion, an unknown conversion
//   character, a size the conversion does not take, a width of 0 or one on
//   %n or %%, a '*' on %n or %%, a scanset without its ']', a %l[ set
//   that is not UTF-8) ends scanning with the count so far, before the
//   malformed conversion takes an argument. Flags and precisions are
//   printf's: "%-d" and "%.2f" are malformed here.
// An argument is taken only for a conversion that stores. On a failure the
// conversion's destination may hold part of the field (%c, %s and %[ store
// as they read).
#pragma once

#include <cstdarg>

namespace tollan::stdc {

// Where scanned text comes from.
class TextSource {
public:
    // The next byte (0..255), or -1 at the end of the input or when reading
    // failed (the source keeps its own error state).
    virtual int next() noexcept = 0;
    // Gives back `byte`, the value next() returned last (never -1); at most
    // one byte is given back between two calls of next().
    virtual void giveBack(int byte) noexcept = 0;

protected:
    TextSource() = default;
    TextSource(const TextSource &) = default;
    TextSource &operator=(const TextSource &) = default;
    ~TextSource() = default;
};

// Reads `source` as `format` says (see above), storing through the pointers
// of `arguments`. Returns the number of items assigned, or -1 (EOF) when the
// input ended or failed before the first conversion was complete. Once the
// source has returned -1 it is not asked again during this call. errno is
// set only for ERANGE and EILSEQ as described above.
int scanFormatted(TextSource &source, const char *format, va_list arguments) noexcept;

}  // namespace tollan::stdc
