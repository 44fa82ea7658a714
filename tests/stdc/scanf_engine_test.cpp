// The scanf engine: a conformance table of formats and inputs (what is
// returned, what is stored, byte for byte, what is left unread, what errno
// says), round trips of floating-point values through their shortest and
// longest texts, the exact long double reader against std::from_chars for
// double, and on Linux the host's sscanf on generated cases.
#include <gtest/gtest.h>

#include <cerrno>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "fixtures/text_source.h"
#include "stdc/scanf_engine.h"
#include "stdc/scanf_exact_float.h"
#include "stdc/scanf_float_text.h"
#include "stdc/scanf_input.h"

namespace {

using tollan::testing::StringTextSource;

// --- what a conversion is expected to store ---------------------------------

struct Stored {
    enum class Kind { integer, real, text, bytes, wideText, wideCharacters };
    Kind kind = Kind::integer;
    std::string bytes;  // the value's bytes (integers, reals) or the text
    std::wstring wide;
};

Stored integer(size_t size, uint64_t value)
{
    Stored stored;
    stored.bytes.assign(reinterpret_cast<const char *>(&value), size);  // both targets are little-endian
    return stored;
}
Stored I8(int64_t value)
{
    return integer(1, static_cast<uint64_t>(value));
}
Stored I16(int64_t value)
{
    return integer(2, static_cast<uint64_t>(value));
}
Stored I32(int64_t value)
{
    return integer(4, static_cast<uint64_t>(value));
}
Stored I64(int64_t value)
{
    return integer(8, static_cast<uint64_t>(value));
}
Stored U64(uint64_t value)
{
    return integer(8, value);
}
Stored L(int64_t value)
{
    return integer(sizeof(long), static_cast<uint64_t>(static_cast<long>(value)));
}
Stored P(uintptr_t value)
{
    return integer(sizeof(void *), value);
}

// A long double's value bytes; the rest of its storage is padding.
constexpr size_t kLongDoubleBytes = std::numeric_limits<long double>::digits == 64 ? 10 : sizeof(long double);

template <typename T>
Stored real(T value, size_t size = sizeof(T))
{
    Stored stored;
    stored.kind = Stored::Kind::real;
    stored.bytes.assign(reinterpret_cast<const char *>(&value), size);
    return stored;
}
Stored F(float value)
{
    return real(value);
}
Stored D(double value)
{
    return real(value);
}
Stored LD(long double value)
{
    return real(value, kLongDoubleBytes);
}
template <typename T>
T nan(bool negative)
{
    return std::copysign(std::numeric_limits<T>::quiet_NaN(), negative ? T(-1) : T(1));
}

Stored textOf(Stored::Kind kind, std::string text)
{
    Stored stored;
    stored.kind = kind;
    stored.bytes = std::move(text);
    return stored;
}
Stored S(std::string text)
{
    return textOf(Stored::Kind::text, std::move(text));
}
Stored C(std::string text)
{
    return textOf(Stored::Kind::bytes, std::move(text));
}
Stored wideOf(Stored::Kind kind, std::wstring text)
{
    Stored stored;
    stored.kind = kind;
    stored.wide = std::move(text);
    return stored;
}
Stored WS(std::wstring text)
{
    return wideOf(Stored::Kind::wideText, std::move(text));
}
Stored WC(std::wstring text)
{
    return wideOf(Stored::Kind::wideCharacters, std::move(text));
}

// --- one case: format, input and what comes of it ----------------------------

struct Row {
    const char *format;
    std::string input;
    int result;
    std::vector<Stored> stored;
    std::string left;  // what stays unread
    int error = 0;     // errno afterwards (0: untouched)
};

// Destinations: filled with a pattern, so that a byte written past a value
// (or into a slot the format does not name) shows.
constexpr size_t kSlots = 4;
constexpr size_t kSlotSize = 256;
constexpr unsigned char kUntouched = 0xA5;

struct Slots {
    alignas(16) unsigned char bytes[kSlots][kSlotSize];
    Slots() { std::memset(bytes, kUntouched, sizeof bytes); }
    bool untouchedFrom(size_t slot, size_t from) const
    {
        for (size_t i = from; i < kSlotSize; ++i)
            if (bytes[slot][i] != kUntouched) return false;
        return true;
    }
};

int scan(StringTextSource &source, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int result = tollan::stdc::scanFormatted(source, format, arguments);
    va_end(arguments);
    return result;
}

std::string hex(const void *data, size_t size)
{
    std::string text;
    char piece[4];
    for (size_t i = 0; i < size; ++i) {
        std::snprintf(piece, sizeof piece, "%02X ", static_cast<const unsigned char *>(data)[i]);
        text += piece;
    }
    return text;
}

::testing::AssertionResult holds(const Slots &slots, size_t slot, const Stored &expected)
{
    const unsigned char *at = slots.bytes[slot];
    std::string want = expected.bytes;
    size_t checkedUpTo = want.size();
    switch (expected.kind) {
        case Stored::Kind::integer:
        case Stored::Kind::real:
            // A long double's padding is the compiler's business.
            if (expected.kind == Stored::Kind::real && want.size() == kLongDoubleBytes &&
                kLongDoubleBytes != sizeof(long double))
                checkedUpTo = sizeof(long double);
            break;
        case Stored::Kind::text:
            want.push_back('\0');
            checkedUpTo = want.size();
            break;
        case Stored::Kind::bytes:
            break;
        case Stored::Kind::wideText:
        case Stored::Kind::wideCharacters: {
            std::wstring wide = expected.wide;
            if (expected.kind == Stored::Kind::wideText) wide.push_back(L'\0');
            want.assign(reinterpret_cast<const char *>(wide.data()), wide.size() * sizeof(wchar_t));
            checkedUpTo = want.size();
            break;
        }
    }
    if (std::memcmp(at, want.data(), want.size()) != 0)
        return ::testing::AssertionFailure() << "slot " << slot << " holds " << hex(at, want.size())
                                             << "instead of " << hex(want.data(), want.size());
    if (!slots.untouchedFrom(slot, checkedUpTo))
        return ::testing::AssertionFailure()
               << "slot " << slot << " was written past its value: " << hex(at, checkedUpTo + 8);
    return ::testing::AssertionSuccess();
}

std::string printable(const std::string &text)
{
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7F) {
            out += c;
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
            out += escaped;
        }
    }
    return out;
}

void check(const std::vector<Row> &rows)
{
    for (const Row &row : rows) {
        SCOPED_TRACE(std::string("format \"") + printable(row.format) + "\", input \"" +
                     printable(row.input) + "\"");
        ASSERT_LE(row.stored.size(), kSlots);
        StringTextSource source(row.input);
        Slots slots;
        errno = 0;
        const int result =
            scan(source, row.format, slots.bytes[0], slots.bytes[1], slots.bytes[2], slots.bytes[3]);
        const int error = errno;
        EXPECT_EQ(result, row.result);
        for (size_t slot = 0; slot < kSlots; ++slot) {
            if (slot < row.stored.size())
                EXPECT_TRUE(holds(slots, slot, row.stored[slot]));
            else
                EXPECT_TRUE(slots.untouchedFrom(slot, 0)) << "slot " << slot << " was written";
        }
        EXPECT_EQ(printable(source.rest()), printable(row.left));
        EXPECT_EQ(error, row.error);
        EXPECT_EQ(source.violations(), 0) << "the source's contract was broken";
    }
}

// --- the conformance table ----------------------------------------------------

TEST(ScanfEngine, DirectivesWhiteSpaceOrdinaryBytesAndTheEndOfInput)
{
    check({
        {"", "abc", 0, {}, "abc"},
        {"", "", 0, {}, ""},
        {" ", "", 0, {}, ""},
        {" ", " \t\n\v\f\rx", 0, {}, "x"},
        {"\t\n", "   x", 0, {}, "x"},
        {"abc", "abc", 0, {}, ""},
        {"abc", "abd", 0, {}, "d"},
        {"abc", "ab", -1, {}, ""},
        {"abc", "", -1, {}, ""},
        {"x", " x", 0, {}, " x"},
        {" x", "   x", 0, {}, ""},
        {"x y", "xy", 0, {}, ""},
        {"a%d", "b5", 0, {}, "b5"},
        {"abc%d", "abc", -1, {}, ""},
        {"abc%d", "abc x", 0, {}, "x"},
        {"%d", "", -1, {}, ""},
        {"%d", "   ", -1, {}, ""},
        {"%d", " \t\n\v\f\r7", 1, {I32(7)}, ""},
        {"%d", "x", 0, {}, "x"},
        {"%d,%d", "1,2", 2, {I32(1), I32(2)}, ""},
        {"%d,%d", "1;2", 1, {I32(1)}, ";2"},
        {"%d,%d", "1", 1, {I32(1)}, ""},
        {"%d %d", "1", 1, {I32(1)}, ""},
        {"%d %d", "1 x", 1, {I32(1)}, "x"},
        {"%d\n", "5\n\n  z", 1, {I32(5)}, "z"},
        {"%d%d", "1 2 3", 2, {I32(1), I32(2)}, " 3"},
        {"%d:%d:%d", "12:34:56", 3, {I32(12), I32(34), I32(56)}, ""},
        {"%d :%d", "1   :2", 2, {I32(1), I32(2)}, ""},
        {"%d:%d", "1 :2", 1, {I32(1)}, " :2"},
        {"%%", "%", 0, {}, ""},
        {"%%", "  %x", 0, {}, "x"},
        {"%%", "x", 0, {}, "x"},
        {"%%", "", -1, {}, ""},
        {"%%%d", "%", -1, {}, ""},
        {"%d%%", "5 %", 1, {I32(5)}, ""},
        {"%d%%", "5", 1, {I32(5)}, ""},
        {"100%%%d", "100% 7", 1, {I32(7)}, ""},
        // A suppressed conversion completes a conversion: a later end of
        // input no longer returns EOF. %n does not.
        {"%*d %d", "1", 0, {}, ""},
        {"%*d", "1", 0, {}, ""},
        {"%*d%d", "1 2", 1, {I32(2)}, ""},
        {"%n%d", "", -1, {I32(0)}, ""},
        {"%n%d", "x", 0, {I32(0)}, "x"},
        {"%d %s %lf", "7 abc 2.5", 3, {I32(7), S("abc"), D(2.5)}, ""},
        {"%2d%3s%c", "12345678", 3, {I32(12), S("345"), C("6")}, "78"},
        {"%[^=]=%d", "key=42;", 2, {S("key"), I32(42)}, ";"},
        {"%s%n %d", "ab 12", 2, {S("ab"), I32(2), I32(12)}, ""},
    });
}

TEST(ScanfEngine, SignedDecimalAndPrefixedIntegers)
{
    check({
        {"%d", "42", 1, {I32(42)}, ""},
        {"%d", "-42", 1, {I32(-42)}, ""},
        {"%d", "+42", 1, {I32(42)}, ""},
        {"%d", "  -0", 1, {I32(0)}, ""},
        {"%d", "007", 1, {I32(7)}, ""},
        {"%d", "12ab", 1, {I32(12)}, "ab"},
        {"%d", "0x10", 1, {I32(0)}, "x10"},
        {"%d", "1.5", 1, {I32(1)}, ".5"},
        {"%d", "-", 0, {}, ""},
        {"%d", "+", 0, {}, ""},
        {"%d", "- 1", 0, {}, " 1"},
        {"%d", "--1", 0, {}, "-1"},
        {"%d", "+-1", 0, {}, "-1"},
        {"%d", "2147483647", 1, {I32(2147483647)}, ""},
        {"%d", "-2147483648", 1, {I32(-2147483648LL)}, ""},
        // Read in 64 bits, then cut to the target's width.
        {"%d", "2147483648", 1, {I32(-2147483648LL)}, ""},
        {"%d", "-2147483649", 1, {I32(2147483647)}, ""},
        {"%d", "4294967301", 1, {I32(5)}, ""},
        {"%d", "9223372036854775807", 1, {I32(-1)}, ""},
        {"%d", "9223372036854775808", 1, {I32(-1)}, "", ERANGE},
        {"%d", "99999999999999999999999", 1, {I32(-1)}, "", ERANGE},
        {"%d", "-9223372036854775809", 1, {I32(0)}, "", ERANGE},
        {"%2d", "12345", 1, {I32(12)}, "345"},
        {"%3d", "  -12", 1, {I32(-12)}, ""},
        {"%1d", "-5", 0, {}, "5"},
        {"%2d", "+-5", 0, {}, "-5"},
        {"%*d%d", "1 2", 1, {I32(2)}, ""},
        {"%*2d%d", "123", 1, {I32(3)}, ""},
        {"%d", "00000000000000000000000000000000000000042", 1, {I32(42)}, ""},
        {"%i", "42", 1, {I32(42)}, ""},
        {"%i", "0x1A", 1, {I32(26)}, ""},
        {"%i", "0X1a", 1, {I32(26)}, ""},
        {"%i", "-0x10", 1, {I32(-16)}, ""},
        {"%i", "+0x10", 1, {I32(16)}, ""},
        {"%i", "010", 1, {I32(8)}, ""},
        {"%i", "-017", 1, {I32(-15)}, ""},
        {"%i", "08", 1, {I32(0)}, "8"},
        {"%i", "0", 1, {I32(0)}, ""},
        {"%i", "0 x", 1, {I32(0)}, " x"},
        {"%i", "1e5", 1, {I32(1)}, "e5"},
        {"%i", "0x", 0, {}, ""},
        {"%i", "0xg", 0, {}, "g"},
        {"%i", "-0x", 0, {}, ""},
        {"%2i", "0x1", 0, {}, "1"},
        {"%3i", "0x1F", 1, {I32(1)}, "F"},
        {"%i", "0x7fffffffffffffff", 1, {I32(-1)}, ""},
        {"%i", "0x10000000000000000", 1, {I32(-1)}, "", ERANGE},
        {"%lli", "0x8000000000000000", 1, {I64(INT64_MAX)}, "", ERANGE},
        {"%lli", "-0x8000000000000000", 1, {I64(INT64_MIN)}, ""},
        {"%lli", "0777777777777777777777", 1, {I64(INT64_MAX)}, ""},
        {"%lli", "01777777777777777777777", 1, {I64(INT64_MAX)}, "", ERANGE},
    });
}

TEST(ScanfEngine, UnsignedOctalDecimalAndHexadecimalIntegers)
{
    check({
        {"%o", "17", 1, {I32(15)}, ""},
        {"%o", "0017", 1, {I32(15)}, ""},
        {"%o", "8", 0, {}, "8"},
        {"%o", "78", 1, {I32(7)}, "8"},
        {"%o", "-1", 1, {I32(0xFFFFFFFF)}, ""},
        {"%o", "0x1", 1, {I32(0)}, "x1"},
        {"%o", "37777777777", 1, {I32(0xFFFFFFFF)}, ""},
        {"%u", "0", 1, {I32(0)}, ""},
        {"%u", "4294967295", 1, {I32(0xFFFFFFFF)}, ""},
        {"%u", "4294967296", 1, {I32(0)}, ""},
        {"%u", "-1", 1, {I32(0xFFFFFFFF)}, ""},
        {"%u", "-4294967295", 1, {I32(1)}, ""},
        {"%u", "+7", 1, {I32(7)}, ""},
        {"%u", "x", 0, {}, "x"},
        {"%llu", "18446744073709551615", 1, {U64(UINT64_MAX)}, ""},
        {"%llu", "18446744073709551616", 1, {U64(UINT64_MAX)}, "", ERANGE},
        {"%llu", "-18446744073709551615", 1, {U64(1)}, ""},
        {"%llu", "-18446744073709551616", 1, {U64(UINT64_MAX)}, "", ERANGE},
        {"%llu", "-9223372036854775808", 1, {U64(0x8000000000000000)}, ""},
        {"%x", "ff", 1, {I32(255)}, ""},
        {"%X", "FF", 1, {I32(255)}, ""},
        {"%x", "0xff", 1, {I32(255)}, ""},
        {"%x", "0XFf", 1, {I32(255)}, ""},
        {"%X", "0xABCDEF", 1, {I32(0xABCDEF)}, ""},
        {"%x", "-0x1", 1, {I32(0xFFFFFFFF)}, ""},
        {"%x", "  +a", 1, {I32(10)}, ""},
        {"%x", "0", 1, {I32(0)}, ""},
        {"%x", "00x1", 1, {I32(0)}, "x1"},
        {"%x", "0x", 0, {}, ""},
        {"%x", "0xz", 0, {}, "z"},
        {"%x", "g", 0, {}, "g"},
        {"%x", "fg", 1, {I32(15)}, "g"},
        {"%2x", "0xff", 0, {}, "ff"},
        {"%3x", "0xff", 1, {I32(15)}, "f"},
        {"%1x", "fff", 1, {I32(15)}, "ff"},
        {"%x", "100000000", 1, {I32(0)}, ""},
        {"%x", "10000000000000000", 1, {I32(-1)}, "", ERANGE},
        {"%llx", "123456789abcdef0", 1, {U64(0x123456789abcdef0)}, ""},
        {"%llX", "FFFFFFFFFFFFFFFF", 1, {U64(UINT64_MAX)}, ""},
        {"%*x %x", "ff 10", 1, {I32(16)}, ""},
    });
}

TEST(ScanfEngine, SizesTakeTheirTypesWidth)
{
    check({
        {"%hhd", "127", 1, {I8(127)}, ""},
        {"%hhd", "128", 1, {I8(-128)}, ""},
        {"%hhd", "300", 1, {I8(44)}, ""},
        {"%hhd", "-129", 1, {I8(127)}, ""},
        {"%hhd", "-1", 1, {I8(-1)}, ""},
        {"%hhu", "255", 1, {I8(255)}, ""},
        {"%hhu", "256", 1, {I8(0)}, ""},
        {"%hhu", "-1", 1, {I8(255)}, ""},
        {"%hhx", "1ff", 1, {I8(0xff)}, ""},
        {"%hhi", "0x80", 1, {I8(-128)}, ""},
        {"%hd", "32767", 1, {I16(32767)}, ""},
        {"%hd", "32768", 1, {I16(-32768)}, ""},
        {"%hd", "65536", 1, {I16(0)}, ""},
        {"%hu", "65535", 1, {I16(0xFFFF)}, ""},
        {"%ho", "177777", 1, {I16(0xFFFF)}, ""},
        {"%hx", "ABCD", 1, {I16(0xABCD)}, ""},
        {"%ld", "2147483647", 1, {L(2147483647)}, ""},
        {"%ld", "2147483648", 1, {L(2147483648LL)}, ""},
        {"%ld", "-2147483649", 1, {L(-2147483649LL)}, ""},
        {"%lu", "4294967295", 1, {L(4294967295LL)}, ""},
        {"%lx", "fffffffff", 1, {L(0xfffffffffLL)}, ""},
        {"%lld", "9223372036854775807", 1, {I64(INT64_MAX)}, ""},
        {"%lld", "-9223372036854775808", 1, {I64(INT64_MIN)}, ""},
        {"%lld", "9223372036854775808", 1, {I64(INT64_MAX)}, "", ERANGE},
        {"%lld", "-9223372036854775809", 1, {I64(INT64_MIN)}, "", ERANGE},
        {"%lld", "-99999999999999999999", 1, {I64(INT64_MIN)}, "", ERANGE},
        {"%jd", "-9223372036854775808", 1, {I64(INT64_MIN)}, ""},
        {"%ju", "18446744073709551615", 1, {U64(UINT64_MAX)}, ""},
        {"%zu", "18446744073709551615", 1, {U64(UINT64_MAX)}, ""},
        {"%zd", "-1", 1, {I64(-1)}, ""},
        {"%zx", "ffffffffff", 1, {U64(0xffffffffffULL)}, ""},
        {"%td", "-5000000000", 1, {I64(-5000000000LL)}, ""},
        {"%tu", "5000000000", 1, {I64(5000000000LL)}, ""},
        {"%I64d", "-9223372036854775808", 1, {I64(INT64_MIN)}, ""},
        {"%I64d", "9223372036854775808", 1, {I64(INT64_MAX)}, "", ERANGE},
        {"%I64u", "18446744073709551615", 1, {U64(UINT64_MAX)}, ""},
        {"%I64x", "FFFFFFFFFFFFFFFF", 1, {U64(UINT64_MAX)}, ""},
        {"%I64X", "0x8000000000000000", 1, {U64(0x8000000000000000ULL)}, ""},
        {"%I64o", "1777777777777777777777", 1, {U64(UINT64_MAX)}, ""},
        {"%I64i", "-0x1", 1, {I64(-1)}, ""},
        {"%I32d", "2147483648", 1, {I32(-2147483648LL)}, ""},
        {"%I32d", "-7", 1, {I32(-7)}, ""},
        {"%I32x", "FFFFFFFF", 1, {I32(0xFFFFFFFF)}, ""},
        {"%I32x", "1FFFFFFFF", 1, {I32(0xFFFFFFFF)}, ""},
        {"%I32u", "4294967296", 1, {I32(0)}, ""},
        {"%I32i", "0x7fffffff", 1, {I32(0x7fffffff)}, ""},
        {"%Id", "-5000000000", 1, {I64(-5000000000LL)}, ""},
        {"%Iu", "18446744073709551615", 1, {U64(UINT64_MAX)}, ""},
        {"%Ix", "123456789abcdef", 1, {U64(0x123456789abcdefULL)}, ""},
        {"%Io", "17", 1, {I64(15)}, ""},
        {"%5I64d", "1234567", 1, {I64(12345)}, "67"},
        {"%*I64d%hhd", "1 2", 1, {I8(2)}, ""},
    });
}

TEST(ScanfEngine, PointersReadAsTheLibraryPrintsThem)
{
    check({
        {"%p", "00007F3A5C0012F0", 1, {P(0x7F3A5C0012F0)}, ""},
        {"%p", "0000000000000000", 1, {P(0)}, ""},
        {"%p", "FFFFFFFFFFFFFFFF", 1, {P(UINTPTR_MAX)}, ""},
        {"%p", "0x10", 1, {P(16)}, ""},
        {"%p", "0Xabc", 1, {P(0xabc)}, ""},
        {"%p", "  7f3a5c0012f0 rest", 1, {P(0x7f3a5c0012f0)}, " rest"},
        {"%p", "0000000000000ABCx", 1, {P(0xABC)}, "x"},
        {"%p", "0x", 0, {}, ""},
        {"%p", "zz", 0, {}, "zz"},
        {"%p", "", -1, {}, ""},
        {"%8p", "0000000000000ABC", 1, {P(0)}, "00000ABC"},
        {"%*p%p", "1 2", 1, {P(2)}, ""},
        {"[%p]", "[00000000DEADBEEF]", 1, {P(0xDEADBEEF)}, ""},
    });
}

TEST(ScanfEngine, CountsTakeEverySizeAndAreNoItems)
{
    check({
        {"%d%n", "123 ", 1, {I32(123), I32(3)}, " "},
        {"%d%n", "12x", 1, {I32(12), I32(2)}, "x"},
        {"%n", "", 0, {I32(0)}, ""},
        {"%n", "abc", 0, {I32(0)}, "abc"},
        {"abc%n", "abc", 0, {I32(3)}, ""},
        {" %n", "   x", 0, {I32(3)}, "x"},
        {"%d %n", "1  ", 1, {I32(1), I32(3)}, ""},
        {"%s%n", "\xC3\xA9t\xC3\xA9 ", 1, {S("\xC3\xA9t\xC3\xA9"), I32(5)}, " "},
        {"%ls%n", "\xC3\xA9t\xC3\xA9 ", 1, {WS(L"\u00e9t\u00e9"), I32(5)}, " "},
        {"%*d%n", "  77", 0, {I32(4)}, ""},
        {"%hhn", "", 0, {I8(0)}, ""},
        {"x%hhn", "x", 0, {I8(1)}, ""},
        {"xy%hn", "xy", 0, {I16(2)}, ""},
        {"%ln", "", 0, {L(0)}, ""},
        {"%lln", "", 0, {I64(0)}, ""},
        {"%jn", "", 0, {I64(0)}, ""},
        {"%zn", "", 0, {I64(0)}, ""},
        {"%tn", "", 0, {I64(0)}, ""},
        {"a%I32n", "a", 0, {I32(1)}, ""},
        {"a%I64n", "a", 0, {I64(1)}, ""},
        {"ab%In", "ab", 0, {I64(2)}, ""},
        {"%n%n", "", 0, {I32(0), I32(0)}, ""},
        {"%d%n%d", "1 2", 2, {I32(1), I32(1), I32(2)}, ""},
    });
}

TEST(ScanfEngine, CharactersStringsAndScansets)
{
    check({
        {"%c", "a", 1, {C("a")}, ""},
        {"%c", " a", 1, {C(" ")}, "a"},
        {"%c", "\n", 1, {C("\n")}, ""},
        {" %c", "  x", 1, {C("x")}, ""},
        {"%3c", "abcd", 1, {C("abc")}, "d"},
        {"%3c", "a c", 1, {C("a c")}, ""},
        {"%3c", "ab", 0, {C("ab")}, ""},
        {"%c", "", -1, {}, ""},
        {"%c%c", "a", 1, {C("a")}, ""},
        {"%*2c%c", "abc", 1, {C("c")}, ""},
        {"%c", "\xFF", 1, {C("\xFF")}, ""},
        {"%d%c", "5x", 2, {I32(5), C("x")}, ""},
        {"%s", "hello world", 1, {S("hello")}, " world"},
        {"%s", "  hi", 1, {S("hi")}, ""},
        {"%s", "a\tb", 1, {S("a")}, "\tb"},
        {"%s", "a\nb", 1, {S("a")}, "\nb"},
        {"%3s", "abcdef", 1, {S("abc")}, "def"},
        {"%1s", "ab", 1, {S("a")}, "b"},
        {"%s", "", -1, {}, ""},
        {"%s", "  \n ", -1, {}, ""},
        {"%*s %s", "a b", 1, {S("b")}, ""},
        {"%s%s", "ab", 1, {S("ab")}, ""},
        {"%s", "\xC3\xA9t\xC3\xA9!", 1, {S("\xC3\xA9t\xC3\xA9!")}, ""},
        {"%s", "\x01\x7F\x80", 1, {S("\x01\x7F\x80")}, ""},
        {"%[abc]", "abcxd", 1, {S("abc")}, "xd"},
        {"%[abc]", "cab", 1, {S("cab")}, ""},
        {"%[abc]", " abc", 0, {}, " abc"},
        {"%[ a]", " a b", 1, {S(" a ")}, "b"},
        {"%[^,]", "a b,c", 1, {S("a b")}, ",c"},
        {"%[^,],%[^,]", "x,y", 2, {S("x"), S("y")}, ""},
        {"%[^\n]", "line one\nline two", 1, {S("line one")}, "\nline two"},
        {"%[^\n]%*c%[^\n]", "one\ntwo", 2, {S("one"), S("two")}, ""},
        {"%[]]", "]]x", 1, {S("]]")}, "x"},
        {"%[]a]", "a]b", 1, {S("a]")}, "b"},
        {"%[^]]", "ab]c", 1, {S("ab")}, "]c"},
        {"%[^]a]", "xya", 1, {S("xy")}, "a"},
        {"%[a-c]", "abcd", 1, {S("abc")}, "d"},
        {"%[a-c]", "-", 0, {}, "-"},
        {"%[a-c-e]", "a-ced", 1, {S("a-ce")}, "d"},
        {"%[a-c-e]", "b", 1, {S("b")}, ""},
        {"%[z-a]", "az-b", 1, {S("az-")}, "b"},
        {"%[-a]", "-a-b", 1, {S("-a-")}, "b"},
        {"%[a-]", "a-b", 1, {S("a-")}, "b"},
        {"%[^-]", "ab-c", 1, {S("ab")}, "-c"},
        {"%[]-a]", "^_`b", 1, {S("^_`")}, "b"},
        {"%[0-9A-Fa-f]", "12aF9g", 1, {S("12aF9")}, "g"},
        {"%[a-a]", "aab", 1, {S("aa")}, "b"},
        {"%[a-a]", "a-", 1, {S("a")}, "-"},
        {"%[\x80-\xFF]",
         "\xC3\xA9"
         "a",
         1,
         {S("\xC3\xA9")},
         "a"},
        {"%2[0-9]", "123", 1, {S("12")}, "3"},
        {"%[a]", "b", 0, {}, "b"},
        {"%[a]", "", -1, {}, ""},
        {"%*[a]%d", "aa5", 1, {I32(5)}, ""},
        {"%*[a]%d", "5", 0, {}, "5"},
        {"%[^ ] %[^ ]", "a  b", 2, {S("a"), S("b")}, ""},
    });
}

TEST(ScanfEngine, WideCharactersAreReadAsUtf8)
{
    check({
        {"%lc", "a", 1, {WC(L"a")}, ""},
        {"%lc", " a", 1, {WC(L" ")}, "a"},
        {"%lc", "\xC3\xA9", 1, {WC(L"\u00e9")}, ""},
        {"%lc", "\xE2\x82\xAC", 1, {WC(L"\u20ac")}, ""},
        {"%lc", "\xF0\x9F\x98\x80", 1, {WC(L"\U0001F600")}, ""},
        {"%lc", "\xF4\x8F\xBF\xBF", 1, {WC(L"\U0010FFFF")}, ""},
        {"%lc", "\xEF\xBF\xBF", 1, {WC(L"\uFFFF")}, ""},
        {"%lc", "\xC2\x80", 1, {WC(L"\u0080")}, ""},
        {"%2lc", "\xC3\xA9x", 1, {WC(L"\u00e9")}, "x"},
        {"%2lc", "ab", 1, {WC(L"ab")}, ""},
        {"%3lc", "a\xC3\xA9", 1, {WC(L"a\u00e9")}, ""},
        {"%4lc", "\xF0\x9F\x98\x80", 1, {WC(L"\U0001F600")}, ""},
        // The width counts bytes: a character it cuts cannot make the count.
        {"%2lc", "a\xC3\xA9", 0, {WC(L"a")}, "\xC3\xA9"},
        {"%lc", "\xE2\x82\xAC", 1, {WC(L"\u20ac")}, ""},
        {"%2lc", "a", 0, {WC(L"a")}, ""},
        {"%lc", "", -1, {}, ""},
        {"%lc", "\x80", 0, {}, "\x80", EILSEQ},
        {"%lc",
         "\xBF"
         "a",
         0,
         {},
         "\xBF"
         "a",
         EILSEQ},
        {"%lc", "\xC3(", 0, {}, "(", EILSEQ},
        {"%lc", "\xC3", 0, {}, "", EILSEQ},
        {"%lc", "\xE2\x82", 0, {}, "", EILSEQ},
        {"%lc", "\xC0\x80", 0, {}, "\xC0\x80", EILSEQ},
        {"%lc", "\xC1\xBF", 0, {}, "\xC1\xBF", EILSEQ},
        {"%lc", "\xE0\x80\x80", 0, {}, "\x80\x80", EILSEQ},
        {"%lc", "\xED\xA0\x80", 0, {}, "\xA0\x80", EILSEQ},
        {"%lc", "\xF0\x8F\xBF\xBF", 0, {}, "\x8F\xBF\xBF", EILSEQ},
        {"%lc", "\xF4\x90\x80\x80", 0, {}, "\x90\x80\x80", EILSEQ},
        {"%lc", "\xF5\x80\x80\x80", 0, {}, "\xF5\x80\x80\x80", EILSEQ},
        {"%lc", "\xFF", 0, {}, "\xFF", EILSEQ},
        {"%lc",
         "\xE2\x82"
         "a",
         0,
         {},
         "a",
         EILSEQ},
        {"%ls", "h\xC3\xA9llo w", 1, {WS(L"h\u00e9llo")}, " w"},
        {"%ls", "  \xE2\x82\xAC\xF0\x9F\x98\x80.", 1, {WS(L"\u20ac\U0001F600.")}, ""},
        {"%3ls", "\xC3\xA9\xC3\xA9", 1, {WS(L"\u00e9")}, "\xC3\xA9"},
        {"%4ls", "\xC3\xA9\xC3\xA9", 1, {WS(L"\u00e9\u00e9")}, ""},
        {"%1ls", "\xC3\xA9", 0, {}, "\xC3\xA9"},
        {"%ls", "ab\xFF", 0, {WC(L"ab")}, "\xFF", EILSEQ},
        {"%ls", "", -1, {}, ""},
        {"%*ls%d", "\xC3\xA9 5", 1, {I32(5)}, ""},
        {"%*lc%lc", "\xC3\xA9\xC3\xA8", 1, {WC(L"\u00e8")}, ""},
        {"%l[a-z]", "abc\xC3\xA9", 1, {WS(L"abc")}, "\xC3\xA9"},
        {"%l[^,]", "\xC3\xA9\xE2\x82\xAC,x", 1, {WS(L"\u00e9\u20ac")}, ",x"},
        {"%l[^,]", "\xC3\xA9\xFF,", 0, {WC(L"\u00e9")}, "\xFF,", EILSEQ},
        {"%l[a-z\xC3\xA9]", "\xC3\xA9t\xC3\xA9!", 1, {WS(L"\u00e9t\u00e9")}, "!"},
        {"%l[\xC3\xA0-\xC3\xBF]", "\xC3\xA0\xC3\xBFx", 1, {WS(L"\u00e0\u00ff")}, "x"},
        {"%l[\xC2\x80-\xF4\x8F\xBF\xBF]",
         "\xC3\xA9\xF0\x9F\x98\x80"
         "a",
         1,
         {WS(L"\u00e9\U0001F600")},
         "a"},
        {"%l[]\xE2\x82\xAC]", "]\xE2\x82\xAC]x", 1, {WS(L"]\u20ac]")}, "x"},
        {"%3l[^,]", "a\xC3\xA9\xC3\xA9", 1, {WS(L"a\u00e9")}, "\xC3\xA9"},
        // Only some characters that start with 0xC3 are members: the whole
        // character is read to be tested, and an outsider cannot go back.
        {"%l[a-z\xC3\xA9]", "a\xC3\xA8", 0, {WC(L"a")}, ""},
        {"%l[^\xE2\x82\xAC]", "ab\xE2\x82\xAC", 0, {WC(L"ab")}, ""},
        {"%l[^\xE2\x82\xAC]", "ab\xE2\x82\xAD", 1, {WS(L"ab\u20ad")}, ""},
        {"%l[a]", "", -1, {}, ""},
        {"%l[a]", "\xC3\xA9", 0, {}, "\xC3\xA9"},
    });
}

TEST(ScanfEngine, FloatsReadStrtodsFormsAndStopWhereTheFormCannotComplete)
{
    const float inf = std::numeric_limits<float>::infinity();
    check({
        {"%f", "1.5", 1, {F(1.5f)}, ""},
        {"%f", "-2.25", 1, {F(-2.25f)}, ""},
        {"%f", "+.5", 1, {F(0.5f)}, ""},
        {"%f", "5.", 1, {F(5.0f)}, ""},
        {"%f", ".5e1", 1, {F(5.0f)}, ""},
        {"%f", "1e3", 1, {F(1000.0f)}, ""},
        {"%f", "1E-2", 1, {F(0.01f)}, ""},
        {"%f", "1e+2", 1, {F(100.0f)}, ""},
        {"%f", "0.1", 1, {F(0.1f)}, ""},
        {"%f", "  42", 1, {F(42.0f)}, ""},
        {"%f", "0", 1, {F(0.0f)}, ""},
        {"%f", "-0", 1, {F(-0.0f)}, ""},
        {"%f", "-0.0e10", 1, {F(-0.0f)}, ""},
        {"%f", "0e99999999999999999999", 1, {F(0.0f)}, ""},
        {"%f", "00x1", 1, {F(0.0f)}, "x1"},
        {"%f", "12abc", 1, {F(12.0f)}, "abc"},
        {"%f", "1.2.3", 1, {F(1.2f)}, ".3"},
        {"%f", "1e5x", 1, {F(1e5f)}, "x"},
        {"%f", "16777217", 1, {F(16777216.0f)}, ""},
        {"%f", "16777219", 1, {F(16777220.0f)}, ""},
        {"%f", "0x1p-2", 1, {F(0.25f)}, ""},
        {"%f", "0X1.8P+1", 1, {F(3.0f)}, ""},
        {"%f", "0x.8", 1, {F(0.5f)}, ""},
        {"%f", "0x1", 1, {F(1.0f)}, ""},
        {"%f", "-0xA", 1, {F(-10.0f)}, ""},
        {"%f", "0x1e", 1, {F(30.0f)}, ""},
        {"%f", "0x1.fffffep127", 1, {F(FLT_MAX)}, ""},
        {"%f", "0x1p-149", 1, {F(0x1p-149f)}, ""},
        {"%f", "0x1p-150", 1, {F(0.0f)}, "", ERANGE},
        {"%f", "0x1.000002p-150", 1, {F(0x1p-149f)}, ""},
        {"%f", "0x1p128", 1, {F(inf)}, "", ERANGE},
        {"%f", "3.4028235e38", 1, {F(FLT_MAX)}, ""},
        {"%f", "3.4028236e38", 1, {F(inf)}, "", ERANGE},
        {"%f", "1e39", 1, {F(inf)}, "", ERANGE},
        {"%f", "-1e39", 1, {F(-inf)}, "", ERANGE},
        {"%f", "1e-45", 1, {F(0x1p-149f)}, ""},
        {"%f", "1e-46", 1, {F(0.0f)}, "", ERANGE},
        {"%f", "-1e-46", 1, {F(-0.0f)}, "", ERANGE},
        {"%f", "1.17549435e-38", 1, {F(FLT_MIN)}, ""},
        {"%f", "inf", 1, {F(inf)}, ""},
        {"%f", "INF", 1, {F(inf)}, ""},
        {"%f", "-Infinity", 1, {F(-inf)}, ""},
        {"%f", "+iNfInItY", 1, {F(inf)}, ""},
        {"%f", "infx", 1, {F(inf)}, "x"},
        {"%f", "infinityx", 1, {F(inf)}, "x"},
        {"%f", "infin", 0, {}, ""},
        {"%f", "infinx", 0, {}, "x"},
        {"%f", "inx", 0, {}, "x"},
        {"%f", "ix", 0, {}, "x"},
        {"%f", "nan", 1, {F(nan<float>(false))}, ""},
        {"%f", "NaN", 1, {F(nan<float>(false))}, ""},
        {"%f", "-nan", 1, {F(nan<float>(true))}, ""},
        {"%f", "nan(123)", 1, {F(nan<float>(false))}, ""},
        {"%f", "nan()", 1, {F(nan<float>(false))}, ""},
        {"%f", "-NAN(a_Z9)x", 1, {F(nan<float>(true))}, "x"},
        {"%f", "nanq", 1, {F(nan<float>(false))}, "q"},
        {"%f", "nan(", 0, {}, ""},
        {"%f", "nan(ab", 0, {}, ""},
        {"%f", "nan(a b)", 0, {}, " b)"},
        {"%f", "na", 0, {}, ""},
        {"%f", "nax", 0, {}, "x"},
        {"%f", "100ergs", 0, {}, "rgs"},
        {"%f", "1e", 0, {}, ""},
        {"%f", "1e+", 0, {}, ""},
        {"%f", "1e+x", 0, {}, "x"},
        {"%f", "1ex", 0, {}, "x"},
        {"%f", "1e-", 0, {}, ""},
        {"%f", "-", 0, {}, ""},
        {"%f", "+", 0, {}, ""},
        {"%f", "+.", 0, {}, ""},
        {"%f", ".", 0, {}, ""},
        {"%f", ".e1", 0, {}, "e1"},
        {"%f", "-x", 0, {}, "x"},
        {"%f", "x", 0, {}, "x"},
        {"%f", "", -1, {}, ""},
        {"%f", "   ", -1, {}, ""},
        {"%f", "0x", 0, {}, ""},
        {"%f", "0xg", 0, {}, "g"},
        {"%f", "0x.", 0, {}, ""},
        {"%f", "0x.p1", 0, {}, "p1"},
        {"%f", "0xp1", 0, {}, "p1"},
        {"%f", "0x1p", 0, {}, ""},
        {"%f", "0x1p-", 0, {}, ""},
        {"%f", "0x1px", 0, {}, "x"},
        {"%f", "0x1e+1", 1, {F(30.0f)}, "+1"},
        {"%3f", "1e10", 1, {F(10.0f)}, "0"},
        {"%2f", "1e5", 0, {}, "5"},
        {"%1f", "-1", 0, {}, "1"},
        {"%1f", "7.5", 1, {F(7.0f)}, ".5"},
        {"%3f", "infinity", 1, {F(inf)}, "inity"},
        {"%4f", "infinity", 0, {}, "nity"},
        {"%8f", "infinity", 1, {F(inf)}, ""},
        {"%3f", "0x1p3", 1, {F(1.0f)}, "p3"},
        {"%2f", "0x1", 0, {}, "1"},
        {"%5f", "nan(1)", 0, {}, ")"},
        {"%6f", "nan(1)", 1, {F(nan<float>(false))}, ""},
        {"%*f%f", "1 2", 1, {F(2.0f)}, ""},
        {"%*f", "1e999", 0, {}, ""},
        {"%e", "2.5", 1, {F(2.5f)}, ""},
        {"%g", "2.5", 1, {F(2.5f)}, ""},
        {"%a", "0x1p1", 1, {F(2.0f)}, ""},
        {"%E", "2.5", 1, {F(2.5f)}, ""},
        {"%F", "2.5", 1, {F(2.5f)}, ""},
        {"%G", "2.5", 1, {F(2.5f)}, ""},
        {"%A", "2.5", 1, {F(2.5f)}, ""},
        {"%a", "2.5", 1, {F(2.5f)}, ""},
        {"%f%f", "1-2", 2, {F(1.0f), F(-2.0f)}, ""},
    });
}

TEST(ScanfEngine, DoublesAreCorrectlyRoundedAndSayWhenOutOfRange)
{
    const double inf = std::numeric_limits<double>::infinity();
    check({
        {"%lf", "0.1", 1, {D(0.1)}, ""},
        {"%lf", "-0.1", 1, {D(-0.1)}, ""},
        {"%lf", "1.7976931348623157e308", 1, {D(DBL_MAX)}, ""},
        {"%lf", "1.7976931348623158e308", 1, {D(DBL_MAX)}, ""},
        {"%lf", "1.7976931348623159e308", 1, {D(inf)}, "", ERANGE},
        {"%lf", "2.2250738585072014e-308", 1, {D(DBL_MIN)}, ""},
        {"%lf", "2.2250738585072011e-308", 1, {D(0x0.fffffffffffffp-1022)}, ""},
        {"%lf", "4.9406564584124654e-324", 1, {D(0x1p-1074)}, ""},
        {"%lf", "2.4703282292062328e-324", 1, {D(0x1p-1074)}, ""},
        {"%lf", "2.4703282292062327e-324", 1, {D(0.0)}, "", ERANGE},
        {"%lf", "1e-400", 1, {D(0.0)}, "", ERANGE},
        {"%lf", "-1e-400", 1, {D(-0.0)}, "", ERANGE},
        {"%lf", "1e400", 1, {D(inf)}, "", ERANGE},
        {"%lf", "-1e400", 1, {D(-inf)}, "", ERANGE},
        {"%lf", "1e-99999999999999999999", 1, {D(0.0)}, "", ERANGE},
        {"%lf", "1e99999999999999999999", 1, {D(inf)}, "", ERANGE},
        {"%lf", "0x1p-1074", 1, {D(0x1p-1074)}, ""},
        {"%lf", "0x1p-1075", 1, {D(0.0)}, "", ERANGE},
        {"%lf", "0x1.8p-1075", 1, {D(0x1p-1074)}, ""},
        {"%lf", "0x1.0000000000001p-1075", 1, {D(0x1p-1074)}, ""},
        {"%lf", "0x3p-1075", 1, {D(0x1p-1073)}, ""},
        {"%lf", "0x1.fffffffffffffp1023", 1, {D(DBL_MAX)}, ""},
        {"%lf", "0x1.fffffffffffff7ffp1023", 1, {D(DBL_MAX)}, ""},
        {"%lf", "0x1.fffffffffffff8p1023", 1, {D(inf)}, "", ERANGE},
        {"%lf", "0x1p1024", 1, {D(inf)}, "", ERANGE},
        {"%lf", "0x0.00000000000000000000000000000001p128", 1, {D(1.0)}, ""},
        {"%lf", "0x1.00000000000008p0", 1, {D(1.0)}, ""},
        {"%lf", "0x1.00000000000018p0", 1, {D(0x1.0000000000002p0)}, ""},
        {"%lf", "0x1.000000000000080000000000000000001p0", 1, {D(0x1.0000000000001p0)}, ""},
        {"%lf", "000000000000000000000000001.5", 1, {D(1.5)}, ""},
        {"%lf", "0.000000000000000000000000000000000000000000001e45", 1, {D(1.0)}, ""},
        {"%lf", "123456789012345678901234567890", 1, {D(123456789012345678901234567890.0)}, ""},
        {"%lf", "9007199254740993", 1, {D(9007199254740992.0)}, ""},
        {"%lf", "9007199254740995", 1, {D(9007199254740996.0)}, ""},
        {"%lf", "9007199254740993.0000000000000000000001", 1, {D(9007199254740994.0)}, ""},
        {"%lf", "3.14159265358979323846264338327950288", 1, {D(3.14159265358979323846)}, ""},
        {"%lf", "-Infinity", 1, {D(-inf)}, ""},
        {"%lf", "nan(0x7ff)", 1, {D(nan<double>(false))}, ""},
        {"%lf", "-nan", 1, {D(nan<double>(true))}, ""},
        {"%lg", "-1.5E+3", 1, {D(-1500.0)}, ""},
        {"%le", "1e-5", 1, {D(1e-5)}, ""},
        {"%la", "0x1.921fb54442d18p+1", 1, {D(0x1.921fb54442d18p+1)}, ""},
        {"%lA", "0X1P-1022", 1, {D(DBL_MIN)}, ""},
        {"%lE", "5e-324", 1, {D(0x1p-1074)}, ""},
        {"%lF", "100ergs", 0, {}, "rgs"},
        {"%lG", "1e", 0, {}, ""},
        {"%5lf", "3.14159", 1, {D(3.141)}, "59"},
        {"%lf %lf", "1e308 1e309", 2, {D(1e308), D(inf)}, "", ERANGE},
    });
}

TEST(ScanfEngine, LongDoublesKeepTheirOwnPrecisionAndRange)
{
    const long double inf = std::numeric_limits<long double>::infinity();
    check({
        {"%Lf", "0.1", 1, {LD(0.1L)}, ""},
        {"%Lf", "-0.1", 1, {LD(-0.1L)}, ""},
        {"%Lf", "1", 1, {LD(1.0L)}, ""},
        {"%Lf", "0", 1, {LD(0.0L)}, ""},
        {"%Lf", "-0", 1, {LD(-0.0L)}, ""},
        {"%Lf", "3.14159265358979323846264338327950288", 1, {LD(3.14159265358979323846264338327950288L)}, ""},
        {"%Lf", "1e4000", 1, {LD(1e4000L)}, ""},
        {"%Lf", "-1e-4000", 1, {LD(-1e-4000L)}, ""},
        {"%Lf", "1e308", 1, {LD(1e308L)}, ""},
        {"%Lf", "1e-320", 1, {LD(1e-320L)}, ""},
        {"%Lf", "123456789012345678901234567890", 1, {LD(123456789012345678901234567890.0L)}, ""},
        {"%Lf", "18446744073709551615", 1, {LD(18446744073709551615.0L)}, ""},
        {"%Lf", "18446744073709551617", 1, {LD(18446744073709551616.0L)}, ""},
        {"%Lf", "1.18973149535723176502e+4932", 1, {LD(LDBL_MAX)}, ""},
        {"%Lf", "1.18973149535723176505e+4932", 1, {LD(LDBL_MAX)}, ""},
        {"%Lf", "1.18973149535723176506e+4932", 1, {LD(inf)}, "", ERANGE},
        {"%Lf", "1e4933", 1, {LD(inf)}, "", ERANGE},
        {"%Lf", "-1e5000", 1, {LD(-inf)}, "", ERANGE},
        {"%Lf", "3.36210314311209350626e-4932", 1, {LD(LDBL_MIN)}, ""},
        {"%Lf", "3.64519953188247460253e-4951", 1, {LD(0x1p-16445L)}, ""},
        {"%Lf", "2e-4951", 1, {LD(0x1p-16445L)}, ""},
        {"%Lf", "1.8e-4951", 1, {LD(0.0L)}, "", ERANGE},
        {"%Lf", "1e-4951", 1, {LD(0.0L)}, "", ERANGE},
        {"%Lf", "-1e-5000", 1, {LD(-0.0L)}, "", ERANGE},
        {"%Lf", "1e-99999999999999999999", 1, {LD(0.0L)}, "", ERANGE},
        {"%Lf", "3.6e-4950", 1, {LD(3.6e-4950L)}, ""},
        {"%Lf", "0x1p-16445", 1, {LD(0x1p-16445L)}, ""},
        {"%Lf", "0x1p-16446", 1, {LD(0.0L)}, "", ERANGE},
        {"%Lf", "0x1.8p-16446", 1, {LD(0x1p-16445L)}, ""},
        {"%Lf", "0x3p-16446", 1, {LD(0x1p-16444L)}, ""},
        {"%Lf", "0xf.fffffffffffffffp16380", 1, {LD(LDBL_MAX)}, ""},
        {"%Lf", "0xf.fffffffffffffff8p16380", 1, {LD(inf)}, "", ERANGE},
        {"%Lf", "0x1p16384", 1, {LD(inf)}, "", ERANGE},
        {"%Lf", "0x1.0000000000000001p0", 1, {LD(1.0L)}, ""},
        {"%Lf", "0x1.0000000000000003p0", 1, {LD(0x1.0000000000000004p0L)}, ""},
        {"%Lf", "0x1.00000000000000010000000000001p0", 1, {LD(0x1.0000000000000002p0L)}, ""},
        {"%Lf", "0x0.000000000000000000000000000001p120", 1, {LD(1.0L)}, ""},
        {"%Lf", "inf", 1, {LD(inf)}, ""},
        {"%Lf", "-nan", 1, {LD(nan<long double>(true))}, ""},
        {"%Lf", "1e+x", 0, {}, "x"},
        {"%Lg", "2.5", 1, {LD(2.5L)}, ""},
        {"%La", "0x1.8p1", 1, {LD(3.0L)}, ""},
        {"%LE", "-7e-1", 1, {LD(-0.7L)}, ""},
        {"%*Lf%Lf", "1 2", 1, {LD(2.0L)}, ""},
    });
}

TEST(ScanfEngine, MalformedFormatsEndScanningBeforeTakingAnArgument)
{
    check({
        {"%", "5", 0, {}, "5"},
        {"%d%", "5", 1, {I32(5)}, ""},
        {"%y", "5", 0, {}, "5"},
        {"%C", "5", 0, {}, "5"},
        {"%S", "5", 0, {}, "5"},
        {"%hf", "5", 0, {}, "5"},
        {"%Ld", "5", 0, {}, "5"},
        {"%lp", "5", 0, {}, "5"},
        {"%Ls", "5", 0, {}, "5"},
        {"%hhs", "5", 0, {}, "5"},
        {"%lls", "5", 0, {}, "5"},
        {"%I64f", "5", 0, {}, "5"},
        {"%I64s", "5", 0, {}, "5"},
        {"%I128d", "5", 0, {}, "5"},
        {"%I3d", "5", 0, {}, "5"},
        {"%0d", "5", 0, {}, "5"},
        {"%05d", "5", 0, {}, "5"},
        {"%5%", "%", 0, {}, "%"},
        {"%*%", "%", 0, {}, "%"},
        {"%l%", "%", 0, {}, "%"},
        {"%5n", "", 0, {}, ""},
        {"%*n", "", 0, {}, ""},
        {"%[abc", "abc", 0, {}, "abc"},
        {"%[", "x", 0, {}, "x"},
        {"%[^", "x", 0, {}, "x"},
        {"%[]", "]", 0, {}, "]"},
        {"%[^]", "x", 0, {}, "x"},
        {"%l[\xFF]", "\xFF", 0, {}, "\xFF"},
        {"%l[\xC3]", "\xC3", 0, {}, "\xC3"},
        {"%d %y %d", "1 2 3", 1, {I32(1)}, "2 3"},
        {"%-d", "5", 0, {}, "5"},
        {"%.2f", "5", 0, {}, "5"},
        {"%*", "5", 0, {}, "5"},
        {"%99999999999999999999999999d", "12", 1, {I32(12)}, ""},
    });
}

// --- long texts: ties and the digits past the kept ones ----------------------

std::string scanned(const char *format, const std::string &text, void *value, int *error = nullptr)
{
    StringTextSource source(text);
    errno = 0;
    const int result = scan(source, format, value);
    if (error != nullptr) *error = errno;
    return std::to_string(result) + " left \"" + source.rest() + "\"";
}

template <typename T>
std::string bitsOf(T value)
{
    return hex(&value, std::is_same_v<T, long double> ? kLongDoubleBytes : sizeof(T));
}

// The digits of 5^exponent, by schoolbook multiplication.
std::string powerOfFive(int exponent)
{
    std::string digits = "1";  // least significant first
    for (int i = 0; i < exponent; ++i) {
        int carry = 0;
        for (char &digit : digits) {
            const int product = (digit - '0') * 5 + carry;
            digit = static_cast<char>('0' + product % 10);
            carry = product / 10;
        }
        if (carry != 0) digits += static_cast<char>('0' + carry);
    }
    return std::string(digits.rbegin(), digits.rend());
}

TEST(ScanfEngine, TiesRoundToEvenAndDigitsPastTheKeptOnesStillCount)
{
    const std::string zeros(1000, '0');
    // 1 + 2^-53, halfway between 1 and the double after it.
    const std::string doubleTie = "1.00000000000000011102230246251565404236316680908203125";
    double value = 0;
    EXPECT_EQ(scanned("%lf", doubleTie, &value), "1 left \"\"");
    EXPECT_EQ(bitsOf(value), bitsOf(1.0));
    EXPECT_EQ(scanned("%lf", doubleTie + zeros, &value), "1 left \"\"");
    EXPECT_EQ(bitsOf(value), bitsOf(1.0));
    EXPECT_EQ(scanned("%lf", doubleTie + zeros + "1", &value), "1 left \"\"");
    EXPECT_EQ(bitsOf(value), bitsOf(0x1.0000000000001p0));
    EXPECT_EQ(scanned("%lf", "1.00000000000000011102230246251565404236316680908203124" + zeros + "9", &value),
              "1 left \"\"");
    EXPECT_EQ(bitsOf(value), bitsOf(1.0));

    // 2^-1075 (751 digits), halfway between 0 and the least denormal.
    const std::string digits = powerOfFive(1075);
    const std::string exponent = "e-" + std::to_string(1075 + 1 - digits.size());
    const std::string denormalTie = digits.substr(0, 1) + "." + digits.substr(1);
    int error = 0;
    EXPECT_EQ(scanned("%lf", denormalTie + exponent, &value, &error), "1 left \"\"");
    EXPECT_EQ(bitsOf(value), bitsOf(0.0));
    EXPECT_EQ(error, ERANGE);
    EXPECT_EQ(scanned("%lf", denormalTie + zeros + "1" + exponent, &value, &error), "1 left \"\"");
    EXPECT_EQ(bitsOf(value), bitsOf(0x1p-1074));
    EXPECT_EQ(error, 0);
    long double wide = 0;
    EXPECT_EQ(scanned("%Lf", denormalTie + exponent, &wide), "1 left \"\"");
    EXPECT_EQ(bitsOf(wide), bitsOf(0x1p-1075L));

    // 1 + 2^-64, halfway between 1 and the long double after it.
    const std::string longDoubleTie = "1.0000000000000000000542101086242752217003726400434970855712890625";
    EXPECT_EQ(scanned("%Lf", longDoubleTie, &wide), "1 left \"\"");
    EXPECT_EQ(bitsOf(wide), bitsOf(1.0L));
    EXPECT_EQ(scanned("%Lf", longDoubleTie + zeros, &wide), "1 left \"\"");
    EXPECT_EQ(bitsOf(wide), bitsOf(1.0L));
    EXPECT_EQ(scanned("%Lf", longDoubleTie + zeros + "1", &wide), "1 left \"\"");
    EXPECT_EQ(bitsOf(wide), bitsOf(0x1.0000000000000002p0L));
    // A field width cuts a long text like any other.
    EXPECT_EQ(scanned("%66Lf", longDoubleTie + "1", &wide), "1 left \"1\"");
    EXPECT_EQ(bitsOf(wide), bitsOf(1.0L));
    // Leading zeros are no significant digits, however many.
    EXPECT_EQ(scanned("%lf", "0." + zeros + zeros + "1e2001", &value), "1 left \"\"");
    EXPECT_EQ(bitsOf(value), bitsOf(1.0));
    EXPECT_EQ(scanned("%Lf", zeros + zeros + "1.5", &wide), "1 left \"\"");
    EXPECT_EQ(bitsOf(wide), bitsOf(1.5L));
    // Digits past the kept ones before the point still scale the value.
    EXPECT_EQ(scanned("%lf", "1" + zeros + "e-1000", &value), "1 left \"\"");
    EXPECT_EQ(bitsOf(value), bitsOf(1.0));
    EXPECT_EQ(scanned("%Lf", "1" + zeros + zeros + zeros + zeros + "e-4000", &wide), "1 left \"\"");
    EXPECT_EQ(bitsOf(wide), bitsOf(1.0L));
}

// --- round trips --------------------------------------------------------------

template <typename T>
std::string toText(T value, std::chars_format format, int precision = -1)
{
    char buffer[6000];
    const std::to_chars_result written =
        precision < 0 ? std::to_chars(buffer, buffer + sizeof buffer, value, format)
                      : std::to_chars(buffer, buffer + sizeof buffer, value, format, precision);
    std::string text(buffer, written.ptr);
    if (format == std::chars_format::hex && std::isfinite(value)) text.insert(text[0] == '-' ? 1 : 0, "0x");
    return text;
}

template <typename T>
void expectRoundTrip(const char *format, T value, int precision)
{
    const std::string texts[] = {
        toText(value, std::chars_format::general),
        toText(value, std::chars_format::general, precision),
        toText(value, std::chars_format::hex),
    };
    for (const std::string &text : texts) {
        T back = T(1);
        ASSERT_EQ(scanned(format, text, &back), "1 left \"\"") << text;
        ASSERT_EQ(bitsOf(back), bitsOf(value)) << text;
    }
}

template <typename T>
std::vector<T> boundaryValues()
{
    using Limits = std::numeric_limits<T>;
    std::vector<T> values = {T(0),
                             -T(0),
                             T(1),
                             T(-1),
                             T(0.1L),
                             T(-0.1L),
                             T(1) / T(3),
                             Limits::min(),
                             Limits::max(),
                             -Limits::max(),
                             Limits::denorm_min(),
                             -Limits::denorm_min(),
                             Limits::infinity(),
                             -Limits::infinity(),
                             Limits::epsilon()};
    values.push_back(std::nextafter(Limits::min(), T(0)));
    values.push_back(std::nextafter(Limits::max(), T(0)));
    values.push_back(std::nextafter(T(1), T(2)));
    values.push_back(std::nextafter(T(1), T(0)));
    values.push_back(std::nextafter(Limits::denorm_min(), T(1)));
    return values;
}

TEST(ScanfEngine, DoublesComeBackBitForBitFromTheirTexts)
{
    for (const double value : boundaryValues<double>()) expectRoundTrip("%lf", value, 17);
    std::mt19937_64 random(20260523);
    for (int i = 0; i < 20000; ++i) {
        const uint64_t bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (std::isnan(value)) continue;
        expectRoundTrip("%lf", value, 17);
    }
}

TEST(ScanfEngine, FloatsComeBackBitForBitFromTheirTexts)
{
    for (const float value : boundaryValues<float>()) expectRoundTrip("%f", value, 9);
    std::mt19937 random(20260523);
    for (int i = 0; i < 20000; ++i) {
        const uint32_t bits = random();
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (std::isnan(value)) continue;
        expectRoundTrip("%f", value, 9);
    }
}

TEST(ScanfEngine, LongDoublesComeBackBitForBitFromTheirTexts)
{
    for (const long double value : boundaryValues<long double>()) expectRoundTrip("%Lf", value, 21);
    std::mt19937_64 random(20260523);
    constexpr int kDigits = std::numeric_limits<long double>::digits;
    constexpr int kLeast = std::numeric_limits<long double>::min_exponent - kDigits;
    constexpr int kLargest = std::numeric_limits<long double>::max_exponent - kDigits;
    std::uniform_int_distribution<int> exponents(kLeast, kLargest);
    for (int i = 0; i < 3000; ++i) {
        // A full mantissa at any exponent, or a denormal.
        const bool denormal = i % 10 == 0;
        const uint64_t mantissa = denormal ? random() >> (random() % 64) : random() | uint64_t{1} << 63;
        const long double magnitude =
            std::ldexp(static_cast<long double>(mantissa), denormal ? kLeast : exponents(random));
        expectRoundTrip("%Lf", i % 2 == 0 ? magnitude : -magnitude, 21);
    }
}

// --- the exact reader against std::from_chars, where that is exact -------------

template <typename T>
void expectSameAsFromChars(const std::string &text, std::chars_format format)
{
    T reference = T(0);
    const std::from_chars_result referenceRead =
        std::from_chars(text.data(), text.data() + text.size(), reference, format);
    ASSERT_EQ(referenceRead.ptr, text.data() + text.size()) << text;
    const std::string scanText = format == std::chars_format::hex ? "0x" + text : text;
    StringTextSource source(scanText);
    tollan::stdc::ScanInput input(source);
    tollan::stdc::ScanField field(input, tollan::stdc::kNoWidth);
    tollan::stdc::FloatText parsed;
    ASSERT_EQ(readFloatText(field, &parsed), tollan::stdc::ScanOutcome::done) << text;
    ASSERT_GT(parsed.count, 0u) << text;
    bool outOfRange = false;
    const T exact = tollan::stdc::exactFloat<T>(parsed, &outOfRange);
    EXPECT_EQ(outOfRange, referenceRead.ec == std::errc::result_out_of_range) << text;
    if (!outOfRange) {
        EXPECT_EQ(bitsOf(exact), bitsOf(reference)) << text;
    }
}

TEST(ScanfEngine, TheExactReaderAgreesWithFromCharsForDoubleAndFloat)
{
    std::mt19937_64 random(7);
    const auto decimalText = [&](int maxDigits, int exponentSpan) {
        std::string text;
        const int count = 1 + static_cast<int>(random() % static_cast<uint64_t>(maxDigits));
        for (int i = 0; i < count; ++i) text += static_cast<char>('0' + random() % 10);
        if (text[0] == '0') text[0] = '1';
        const auto point = random() % static_cast<uint64_t>(count + 1);
        if (point < static_cast<uint64_t>(count)) text.insert(point, ".");
        return text + "e" +
               std::to_string(static_cast<int>(random() % static_cast<uint64_t>(2 * exponentSpan)) -
                              exponentSpan);
    };
    for (int i = 0; i < 4000; ++i) {
        expectSameAsFromChars<double>(decimalText(40, 345), std::chars_format::general);
        expectSameAsFromChars<float>(decimalText(25, 50), std::chars_format::general);
    }
    // Ties and the values either side of them, in hexadecimal, where a tie
    // is one more digit.
    for (int i = 0; i < 4000; ++i) {
        uint64_t bits = random() & ~(uint64_t{1} << 63);
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value)) continue;
        std::string text = toText(value, std::chars_format::hex, 13).substr(2);
        const size_t exponentAt = text.find('p');
        const std::string endings[] = {"8", "7fffffff", "80000001"};
        for (const std::string &ending : endings) {
            std::string tie = text;
            tie.insert(exponentAt, ending);
            expectSameAsFromChars<double>(tie, std::chars_format::hex);
        }
    }
}

// --- the host's sscanf on generated cases (glibc reads numbers exactly) ------

#ifndef _WIN32
int hostScan(const char *text, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int result = std::vsscanf(text, format, arguments);
    va_end(arguments);
    return result;
}

TEST(ScanfEngine, IntegersReadAsTheHostReadsThem)
{
    struct Conversion {
        const char *format;  // each ends in %n
        const char *digits;
    };
    const Conversion conversions[] = {
        {"%d%n", "0123456789"},
        {"%i%n", "0123456789"},
        {"%o%n", "01234567"},
        {"%u%n", "0123456789"},
        {"%x%n", "0123456789abcdefABCDEF"},
        {"%hhd%n", "0123456789"},
        {"%hu%n", "0123456789"},
        {"%ld%n", "0123456789"},
        {"%lld%n", "0123456789"},
        {"%llu%n", "0123456789"},
        {"%lli%n", "01234567"},
        {"%llx%n", "0123456789abcdef"},
        {"%3d%n", "0123456789"},
        {"%5llx%n", "0123456789abcdef"},
    };
    std::mt19937_64 random(11);
    for (int i = 0; i < 20000; ++i) {
        const Conversion &conversion = conversions[random() % std::size(conversions)];
        std::string text = std::string(random() % 3, ' ');
        text += "+- "[random() % 3];
        if (random() % 4 == 0) text += "0x";
        const size_t count = 1 + random() % 25;
        const size_t alphabet = std::strlen(conversion.digits);
        for (size_t d = 0; d < count; ++d) text += conversion.digits[random() % alphabet];
        text += ",z"[random() % 2];
        uint64_t ours = 0x5A5A5A5A5A5A5A5A;
        uint64_t theirs = ours;
        int oursCount = -1;
        int theirsCount = -1;
        StringTextSource source(text);
        errno = 0;
        const int oursResult = scan(source, conversion.format, &ours, &oursCount);
        const int oursError = errno;
        errno = 0;
        const int theirsResult = hostScan(text.c_str(), conversion.format, &theirs, &theirsCount);
        const int theirsError = errno;
        SCOPED_TRACE(std::string(conversion.format) + " \"" + text + "\"");
        ASSERT_EQ(oursResult, theirsResult);
        ASSERT_EQ(ours, theirs);
        ASSERT_EQ(oursCount, theirsCount);
        ASSERT_EQ(oursError, theirsError);
    }
}

template <typename T>
void expectSameAsHost(const char *format, const std::string &text)
{
    T ours = T(7);
    T theirs = T(7);
    int oursCount = -1;
    int theirsCount = -1;
    StringTextSource source(text);
    const int oursResult = scan(source, format, &ours, &oursCount);
    const int theirsResult = hostScan(text.c_str(), format, &theirs, &theirsCount);
    ASSERT_EQ(oursResult, theirsResult) << format << " \"" << text << "\"";
    ASSERT_EQ(bitsOf(ours), bitsOf(theirs)) << format << " \"" << text << "\"";
    ASSERT_EQ(oursCount, theirsCount) << format << " \"" << text << "\"";
}

TEST(ScanfEngine, FloatingPointReadsAsTheHostReadsIt)
{
    std::mt19937_64 random(13);
    const auto digits = [&](const char *alphabet, size_t most) {
        std::string text;
        const size_t count = 1 + random() % most;
        for (size_t i = 0; i < count; ++i) text += alphabet[random() % std::strlen(alphabet)];
        if (random() % 2 == 0) text.insert(random() % (count + 1), ".");
        return text;
    };
    for (int i = 0; i < 6000; ++i) {
        std::string text = std::string(1, " +-"[random() % 3]);
        if (random() % 4 == 0) {
            text += "0x" + digits("0123456789abcdefABCDEF", 20) + "p" +
                    std::to_string(static_cast<int>(random() % 33000) - 16500);
        } else {
            const int span = i % 3 == 0 ? 5000 : 400;
            text += digits("0123456789", 40) + "e" +
                    std::to_string(static_cast<int>(random() % (2 * span)) - span);
        }
        text += " x";
        expectSameAsHost<float>("%f%n", text);
        expectSameAsHost<double>("%lf%n", text);
        expectSameAsHost<long double>("%Lf%n", text);
    }
}
#endif

}  // namespace
