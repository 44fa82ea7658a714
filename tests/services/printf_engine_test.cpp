// The printf engine: a conformance table with literal expectations that runs
// alike on Linux and under Wine, the engine's own rules (%p, unknown
// conversions, "(null)", UTF-8), truncation, failures, the pieces a sink
// gets, and on Linux a cross-check of many generated cases against the C
// library's snprintf where the two must agree.
#include <gtest/gtest.h>

#include <cerrno>
#include <cfloat>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "services/printf_engine.h"
#include "services/text_format.h"

namespace {

using tollan::services::printFormatted;
using tollan::services::printToBuffer;
using tollan::services::TextSink;

// The whole text the engine makes, or "-1 errno N" when it fails. The length
// is taken first from a buffer of size 0, so every case also checks that
// the counted length and the written text agree.
std::string printedFrom(const char *format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    errno = 0;
    const int length = printToBuffer(nullptr, 0, format, arguments);
    std::string text;
    if (length < 0) {
        text = "-1 errno " + std::to_string(errno);
    } else {
        text.assign(static_cast<size_t>(length) + 1, '#');
        const int second = printToBuffer(text.data(), text.size(), format, again);
        EXPECT_EQ(second, length) << format;
        EXPECT_EQ(text.back(), '\0') << format;
        text.pop_back();
    }
    va_end(again);
    return text;
}

// Checked by the compiler as printf formats.
std::string printed(const char *format, ...) TOLLAN_PRINTF(1, 2);
std::string printed(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string text = printedFrom(format, arguments);
    va_end(arguments);
    return text;
}

// For what the compiler's printf checks do not know or reject: the Windows
// size prefixes, flags a conversion ignores, unknown conversions.
std::string printedUnchecked(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string text = printedFrom(format, arguments);
    va_end(arguments);
    return text;
}

const std::string kEilseq = "-1 errno " + std::to_string(EILSEQ);
const std::string kEoverflow = "-1 errno " + std::to_string(EOVERFLOW);

#define EXPECT_PRINT(expected, ...) EXPECT_EQ(std::string(expected), printed(__VA_ARGS__))
#define EXPECT_PRINT_UNCHECKED(expected, ...) EXPECT_EQ(std::string(expected), printedUnchecked(__VA_ARGS__))

const double kNan = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();

TEST(PrintfEngine, SignedAndUnsignedIntegers)
{
    EXPECT_PRINT("0", "%d", 0);
    EXPECT_PRINT("-1", "%d", -1);
    EXPECT_PRINT("42", "%i", 42);
    EXPECT_PRINT("2147483647", "%d", INT_MAX);
    EXPECT_PRINT("-2147483648", "%d", INT_MIN);
    EXPECT_PRINT("4294967295", "%u", UINT_MAX);
    EXPECT_PRINT("0", "%u", 0u);
    EXPECT_PRINT("777", "%o", 0777u);
    EXPECT_PRINT("37777777777", "%o", UINT_MAX);
    EXPECT_PRINT("ff", "%x", 255u);
    EXPECT_PRINT("FF", "%X", 255u);
    EXPECT_PRINT("deadbeef", "%x", 0xdeadbeefu);
    EXPECT_PRINT("DEADBEEF", "%X", 0xdeadbeefu);
    EXPECT_PRINT("0", "%x", 0u);
    EXPECT_PRINT("a-1b", "a%db", -1);
    EXPECT_PRINT("1 2 3", "%d %i %u", 1, 2, 3u);
}

TEST(PrintfEngine, IntegerWidthFlagsAndPrecision)
{
    EXPECT_PRINT("   42", "%5d", 42);
    EXPECT_PRINT("42   |", "%-5d|", 42);
    EXPECT_PRINT("00042", "%05d", 42);
    EXPECT_PRINT("  -42", "%5d", -42);
    EXPECT_PRINT("-0042", "%05d", -42);
    EXPECT_PRINT("42", "%1d", 42);
    EXPECT_PRINT("+42", "%+d", 42);
    EXPECT_PRINT(" 42", "% d", 42);
    EXPECT_PRINT_UNCHECKED("+42", "%+ d", 42);
    EXPECT_PRINT("-42", "% d", -42);
    EXPECT_PRINT("+0", "%+d", 0);
    EXPECT_PRINT("+0042", "%+05d", 42);
    EXPECT_PRINT(" 0042", "% 05d", 42);
    EXPECT_PRINT_UNCHECKED("42   |", "%-05d|", 42);
    EXPECT_PRINT("00042", "%.5d", 42);
    EXPECT_PRINT("-00042", "%.5d", -42);
    EXPECT_PRINT("   00042", "%8.5d", 42);
    EXPECT_PRINT_UNCHECKED("   00042", "%08.5d", 42);
    EXPECT_PRINT("00042   |", "%-8.5d|", 42);
    EXPECT_PRINT("  +00042", "%+8.5d", 42);
    EXPECT_PRINT("42", "%.1d", 42);
    EXPECT_PRINT("", "%.0d", 0);
    EXPECT_PRINT("", "%.d", 0);
    EXPECT_PRINT("0", "%.1d", 0);
    EXPECT_PRINT("     ", "%5.0d", 0);
    EXPECT_PRINT("+", "%+.0d", 0);
    EXPECT_PRINT("", "%.0u", 0u);
    EXPECT_PRINT("", "%.0x", 0u);
    EXPECT_PRINT("0000000255", "%.10u", 255u);
    EXPECT_PRINT("0x00ff", "%#.4x", 255u);
    EXPECT_PRINT_UNCHECKED("1234567", "%'d", 1234567);
    EXPECT_PRINT_UNCHECKED("42", "%+u", 42u);
    EXPECT_PRINT_UNCHECKED("2a", "% x", 42u);
    EXPECT_PRINT_UNCHECKED("42", "%#d", 42);
    EXPECT_PRINT_UNCHECKED("+42  |", "%-+ #0-5d|", 42);  // flags repeat; '-' beats '0', '+' beats ' '
}

TEST(PrintfEngine, AlternateForms)
{
    EXPECT_PRINT("0", "%#o", 0u);
    EXPECT_PRINT("010", "%#o", 8u);
    EXPECT_PRINT("0", "%#.0o", 0u);
    EXPECT_PRINT("010", "%#.3o", 8u);
    EXPECT_PRINT("0010", "%#.4o", 8u);
    EXPECT_PRINT("  010", "%#5o", 8u);
    EXPECT_PRINT("00010", "%#05o", 8u);
    EXPECT_PRINT("0", "%#x", 0u);
    EXPECT_PRINT("0", "%#X", 0u);
    EXPECT_PRINT("", "%#.0x", 0u);
    EXPECT_PRINT("     ", "%#5.0x", 0u);
    EXPECT_PRINT("0xff", "%#x", 255u);
    EXPECT_PRINT("0XFF", "%#X", 255u);
    EXPECT_PRINT("0x0000ff", "%#08x", 255u);
    EXPECT_PRINT("    0xff", "%#8x", 255u);
    EXPECT_PRINT("0xff    |", "%#-8x|", 255u);
    EXPECT_PRINT("  0x00ff", "%#8.4x", 255u);
}

TEST(PrintfEngine, SizesWrapAndWiden)
{
    EXPECT_PRINT("44", "%hhd", 300);
    EXPECT_PRINT("-56", "%hhd", 200);
    EXPECT_PRINT("-128", "%hhd", 128);
    EXPECT_PRINT("44", "%hhu", 300);
    EXPECT_PRINT("ff", "%hhx", -1);
    EXPECT_PRINT("377", "%hho", 255);
    EXPECT_PRINT("4464", "%hd", 70000);
    EXPECT_PRINT("-25536", "%hd", 40000);
    EXPECT_PRINT("65535", "%hu", 65535);
    EXPECT_PRINT("2345", "%hx", 0x12345);
    EXPECT_PRINT("-123456789", "%ld", -123456789L);
    EXPECT_PRINT(std::to_string(LONG_MIN), "%ld", LONG_MIN);
    EXPECT_PRINT(std::to_string(ULONG_MAX), "%lu", ULONG_MAX);
    EXPECT_PRINT("-9223372036854775808", "%lld", LLONG_MIN);
    EXPECT_PRINT("9223372036854775807", "%lld", LLONG_MAX);
    EXPECT_PRINT("18446744073709551615", "%llu", ULLONG_MAX);
    EXPECT_PRINT("ffffffffffffffff", "%llx", ULLONG_MAX);
    EXPECT_PRINT("1777777777777777777777", "%llo", ULLONG_MAX);
    EXPECT_PRINT("01777777777777777777777", "%#llo", ULLONG_MAX);
    EXPECT_PRINT("-9223372036854775808", "%jd", INTMAX_MIN);
    EXPECT_PRINT("18446744073709551615", "%ju", UINTMAX_MAX);
    EXPECT_PRINT("18446744073709551615", "%zu", SIZE_MAX);
    EXPECT_PRINT("-5", "%zd", static_cast<ptrdiff_t>(-5));
    EXPECT_PRINT("-7", "%td", static_cast<ptrdiff_t>(-7));
    EXPECT_PRINT("   -7", "%5td", static_cast<ptrdiff_t>(-7));
    EXPECT_PRINT_UNCHECKED("-9223372036854775808", "%Ld", LLONG_MIN);
}

TEST(PrintfEngine, WindowsSizePrefixes)
{
    EXPECT_PRINT_UNCHECKED("-9223372036854775808", "%I64d", INT64_MIN);
    EXPECT_PRINT_UNCHECKED("18446744073709551615", "%I64u", UINT64_MAX);
    EXPECT_PRINT_UNCHECKED("123456789abcdef0", "%I64x", UINT64_C(0x123456789abcdef0));
    EXPECT_PRINT_UNCHECKED("18446744073709551615", "%Iu", SIZE_MAX);
    EXPECT_PRINT_UNCHECKED("-3", "%Id", static_cast<intptr_t>(-3));
    EXPECT_PRINT_UNCHECKED("FFFFFFFFFFFFFFFF", "%IX", UINTPTR_MAX);
    EXPECT_PRINT_UNCHECKED("deadbeef", "%I32x", UINT32_C(0xdeadbeef));
    EXPECT_PRINT_UNCHECKED("-1", "%I32d", INT32_C(-1));
    EXPECT_PRINT_UNCHECKED("4294967295", "%I32u", UINT32_MAX);
    EXPECT_PRINT_UNCHECKED("  0x00ff", "%#8.4I64x", UINT64_C(255));
    // I followed by neither 32 nor 64 is the pointer size; "%I3" then has
    // the unknown conversion '3' and takes no argument.
    EXPECT_PRINT_UNCHECKED("%I3d 7", "%I3d %d", 7);
}

TEST(PrintfEngine, StarWidthAndPrecision)
{
    EXPECT_PRINT("   42", "%*d", 5, 42);
    EXPECT_PRINT("42   |", "%-*d|", 5, 42);
    EXPECT_PRINT("42   |", "%*d|", -5, 42);
    EXPECT_PRINT("42   |", "%-*d|", -5, 42);
    EXPECT_PRINT("00042", "%0*d", 5, 42);
    EXPECT_PRINT("0042", "%.*d", 4, 42);
    EXPECT_PRINT("42", "%.*d", -1, 42);
    EXPECT_PRINT("0", "%.*d", -3, 0);
    EXPECT_PRINT("", "%.*d", 0, 0);
    EXPECT_PRINT("   042", "%*.*d", 6, 3, 42);
    EXPECT_PRINT("042   |", "%*.*d|", -6, 3, 42);
    EXPECT_PRINT("1.500000", "%.*f", -1, 1.5);
    EXPECT_PRINT("1.50", "%.*f", 2, 1.5);
    EXPECT_PRINT("ab", "%.*s", 2, "abcdef");
    EXPECT_PRINT("abc", "%.*s", -1, "abc");
    EXPECT_PRINT("ab  |", "%*s|", -4, "ab");
    EXPECT_PRINT("  ab", "%*s", 4, "ab");
    EXPECT_PRINT("x   5|7", "%c%*d|%d", 'x', 4, 5, 7);
}

TEST(PrintfEngine, Characters)
{
    EXPECT_PRINT("a", "%c", 'a');
    EXPECT_PRINT("  b", "%3c", 'b');
    EXPECT_PRINT("b  |", "%-3c|", 'b');
    EXPECT_PRINT("A", "%c", 0x141);  // converted to unsigned char
    EXPECT_PRINT("\xff", "%c", 255);
    EXPECT_PRINT(std::string("a\0b", 3), "a%cb", 0);
    EXPECT_PRINT_UNCHECKED("  c", "%03c", 'c');
    EXPECT_PRINT_UNCHECKED("c", "%.0c", 'c');
}

TEST(PrintfEngine, Strings)
{
    const char *none = nullptr;
    EXPECT_PRINT("hello", "%s", "hello");
    EXPECT_PRINT("", "%s", "");
    EXPECT_PRINT("     ", "%5s", "");
    EXPECT_PRINT("     hello", "%10s", "hello");
    EXPECT_PRINT("hello     |", "%-10s|", "hello");
    EXPECT_PRINT("hel", "%.3s", "hello");
    EXPECT_PRINT("       hel", "%10.3s", "hello");
    EXPECT_PRINT("hel  |", "%-5.3s|", "hello");
    EXPECT_PRINT("", "%.0s", "hello");
    EXPECT_PRINT("", "%.s", "hello");
    EXPECT_PRINT("abc", "%.10s", "abc");
    EXPECT_PRINT("hi", "%1s", "hi");
    EXPECT_PRINT_UNCHECKED("(null)", "%s", none);
    EXPECT_PRINT_UNCHECKED("  (null)", "%8s", none);
    EXPECT_PRINT_UNCHECKED("(nu", "%.3s", none);
    EXPECT_PRINT_UNCHECKED("   ab", "%05s", "ab");
    EXPECT_PRINT_UNCHECKED("ab", "%+s", "ab");
    // The precision is all that is read: no terminator needed.
    const char unterminated[3] = {'a', 'b', 'c'};
    EXPECT_PRINT("abc", "%.3s", unterminated);
    EXPECT_PRINT("ab", "%.2s", unterminated);
}

TEST(PrintfEngine, WideCharactersInUtf8)
{
    EXPECT_PRINT("A", "%lc", static_cast<wint_t>(L'A'));
    EXPECT_PRINT("\x7f", "%lc", static_cast<wint_t>(0x7F));
    EXPECT_PRINT("\xc2\x80", "%lc", static_cast<wint_t>(0x80));
    EXPECT_PRINT("\xc3\xa9", "%lc", static_cast<wint_t>(0xE9));
    EXPECT_PRINT("\xdf\xbf", "%lc", static_cast<wint_t>(0x7FF));
    EXPECT_PRINT("\xe0\xa0\x80", "%lc", static_cast<wint_t>(0x800));
    EXPECT_PRINT("\xe2\x82\xac", "%lc", static_cast<wint_t>(0x20AC));
    EXPECT_PRINT("\xef\xbf\xbf", "%lc", static_cast<wint_t>(0xFFFF));
    EXPECT_PRINT(std::string("\0", 1), "%lc", static_cast<wint_t>(0));
    EXPECT_PRINT(" \xc3\xa9|", "%3lc|", static_cast<wint_t>(0xE9));  // the width counts bytes
    EXPECT_PRINT("\xc3\xa9  |", "%-4lc|", static_cast<wint_t>(0xE9));
    EXPECT_PRINT(kEilseq, "%lc", static_cast<wint_t>(0xD800));
    EXPECT_PRINT(kEilseq, "ab%lccd", static_cast<wint_t>(0xDFFF));
    if constexpr (sizeof(wint_t) > 2) {
        EXPECT_PRINT("\xf4\x8f\xbf\xbf", "%lc", static_cast<wint_t>(0x10FFFF));
        EXPECT_PRINT(kEilseq, "%lc", static_cast<wint_t>(0x110000));
    }
}

TEST(PrintfEngine, WideStringsInUtf8)
{
    const wchar_t *none = nullptr;
    EXPECT_PRINT("abc", "%ls", L"abc");
    EXPECT_PRINT("", "%ls", L"");
    EXPECT_PRINT("h\xc3\xa9llo \xe2\x82\xac", "%ls", L"h\u00e9llo \u20ac");
    EXPECT_PRINT("\xf0\x9f\x98\x80!", "%ls", L"\U0001F600!");  // a surrogate pair under mingw
    EXPECT_PRINT("\xf4\x8f\xbf\xbf", "%ls", L"\U0010FFFF");
    EXPECT_PRINT("\xc3\xa9", "%.2ls", L"\u00e9\u00e9");
    EXPECT_PRINT("\xc3\xa9", "%.3ls", L"\u00e9\u00e9");  // never half a character
    EXPECT_PRINT("\xc3\xa9\xc3\xa9", "%.4ls", L"\u00e9\u00e9");
    EXPECT_PRINT("", "%.3ls", L"\U0001F600");
    EXPECT_PRINT("\xf0\x9f\x98\x80", "%.4ls", L"\U0001F600");
    EXPECT_PRINT("a", "%.4ls", L"a\U0001F600");
    EXPECT_PRINT("    \xc3\xa9|", "%6ls|", L"\u00e9");
    EXPECT_PRINT("\xc3\xa9    |", "%-6ls|", L"\u00e9");
    EXPECT_PRINT("   \xc3\xa9|", "%5.3ls|", L"\u00e9\u00e9");
    EXPECT_PRINT_UNCHECKED("(null)", "%ls", none);
    EXPECT_PRINT_UNCHECKED("(n", "%.2ls", none);
    // A long string goes out in several pieces and comes back whole.
    const std::wstring longText(1000, L'\u00e9');
    std::string expected;
    for (int i = 0; i < 1000; ++i) expected += "\xc3\xa9";
    EXPECT_PRINT(expected, "%ls", longText.c_str());

    const wchar_t loneLow[] = {L'a', static_cast<wchar_t>(0xDC00), L'b', 0};
    const wchar_t loneHigh[] = {L'a', static_cast<wchar_t>(0xD800), L'b', 0};
    EXPECT_PRINT(kEilseq, "%ls", loneLow);
    EXPECT_PRINT(kEilseq, "x%10ls", loneHigh);
    EXPECT_PRINT("a", "%.1ls", loneHigh);  // the bad character is never reached
    if constexpr (sizeof(wchar_t) > 2) {
        const wchar_t beyond[] = {static_cast<wchar_t>(0x110000), 0};
        EXPECT_PRINT(kEilseq, "%ls", beyond);
    }
    // The precision is all that is read: no terminator needed.
    const wchar_t unterminated[2] = {L'a', L'b'};
    EXPECT_PRINT("ab", "%.2ls", unterminated);
}

TEST(PrintfEngine, FixedNotation)
{
    EXPECT_PRINT("0.000000", "%f", 0.0);
    EXPECT_PRINT("1.000000", "%f", 1.0);
    EXPECT_PRINT("-1.500000", "%f", -1.5);
    EXPECT_PRINT("3.14", "%.2f", 3.14159);
    EXPECT_PRINT("3", "%.0f", 3.14159);
    EXPECT_PRINT("3.", "%#.0f", 3.0);
    EXPECT_PRINT("0", "%.0f", 0.5);  // ties go to even
    EXPECT_PRINT("2", "%.0f", 1.5);
    EXPECT_PRINT("2", "%.0f", 2.5);
    EXPECT_PRINT("4", "%.0f", 3.5);
    EXPECT_PRINT("0.2", "%.1f", 0.25);
    EXPECT_PRINT("0.3", "%.1f", 0.35);  // 0.35 is a little below
    EXPECT_PRINT("0.125", "%.3f", 0.125);
    EXPECT_PRINT("0.12", "%.2f", 0.125);
    EXPECT_PRINT("1.00", "%.2f", 0.999);
    EXPECT_PRINT("     3.142", "%10.3f", 3.14159);
    EXPECT_PRINT("3.142     |", "%-10.3f|", 3.14159);
    EXPECT_PRINT("-00003.142", "%010.3f", -3.14159);
    EXPECT_PRINT("+1.000000", "%+f", 1.0);
    EXPECT_PRINT(" 1.000000", "% f", 1.0);
    EXPECT_PRINT("+0003.50", "%+08.2f", 3.5);
    EXPECT_PRINT("100000000000000000000.000000", "%f", 1e20);
    EXPECT_PRINT("0.000", "%.3f", 1e-10);
    EXPECT_PRINT("-0.000", "%.3f", -1e-10);
    EXPECT_PRINT("123456789.000", "%.3F", 123456789.0);
    EXPECT_PRINT("0.1000000000000000055511151231257827021182", "%.40f", 0.1);
    EXPECT_PRINT(
        "179769313486231570814527423731704356798070567525844996598917476803157260780028538760589558632766878"
        "171540458953514382464234321326889464182768467546703537516986049910576551282076245490090389328944075"
        "868508455133942304583236903222948165808559332123348274797826204144723168738177180919299881250404026"
        "184124858368.000000",
        "%f", DBL_MAX);
}

TEST(PrintfEngine, FixedNotationPastTheExactDigits)
{
    // The smallest subnormal has exactly 1074 decimals; beyond them, zeros.
    const std::string text = printed("%.1080f", std::numeric_limits<double>::denorm_min());
    ASSERT_EQ(text.size(), 1082u);
    EXPECT_EQ(text.substr(0, 2), "0.");
    EXPECT_EQ(text.find_first_not_of('0', 2), 325u);
    EXPECT_EQ(text.substr(320, 40), "0000049406564584124654417656879286822137");
    EXPECT_EQ(text.substr(1060), "8265533447265625000000");
    const std::string wide = printed("%.3000f", 1.0);
    EXPECT_EQ(wide.size(), 3002u);
    EXPECT_EQ(wide.find_first_not_of('0', 2), std::string::npos);
}

TEST(PrintfEngine, ExponentNotation)
{
    EXPECT_PRINT("0.000000e+00", "%e", 0.0);
    EXPECT_PRINT("1.000000e+00", "%e", 1.0);
    EXPECT_PRINT("1.234568e+05", "%e", 123456.789);
    EXPECT_PRINT("-1.234568e+05", "%e", -123456.789);
    EXPECT_PRINT("1e+04", "%.0e", 12345.0);
    EXPECT_PRINT("1.e+04", "%#.0e", 12345.0);
    EXPECT_PRINT("1.500000E-10", "%E", 1.5e-10);
    EXPECT_PRINT("+1.234e+03", "%+.3e", 1234.5);  // an exact tie, to even
    EXPECT_PRINT("+1.236e+03", "%+.3e", 1235.5);
    EXPECT_PRINT(" 1.2e+03", "% .1e", 1234.5);
    EXPECT_PRINT("1.000000e+300", "%e", 1e300);
    EXPECT_PRINT("1.000000e-300", "%e", 1e-300);
    EXPECT_PRINT("2.225074e-308", "%e", DBL_MIN);
    EXPECT_PRINT("4.940656e-324", "%e", std::numeric_limits<double>::denorm_min());
    EXPECT_PRINT("1.797693e+308", "%e", DBL_MAX);
    EXPECT_PRINT("1.000e+01", "%.3e", 9.9996);
    EXPECT_PRINT("   1.234e+03", "%12.3e", 1234.5);
    EXPECT_PRINT("1.234e+03   |", "%-12.3e|", 1234.5);
    EXPECT_PRINT("-001.234e+03", "%012.3e", -1234.5);
    EXPECT_PRINT("1.00000000000000005551e-01", "%.20e", 0.1);
    EXPECT_PRINT("5e-01", "%.0e", 0.5);
}

TEST(PrintfEngine, ExponentNotationPastTheExactDigits)
{
    const std::string text = printed("%.800e", std::numeric_limits<double>::denorm_min());
    ASSERT_EQ(text.size(), 807u);
    EXPECT_EQ(text.substr(0, 12), "4.9406564584");
    EXPECT_EQ(text.substr(760), std::string(42, '0') + "e-324");
    EXPECT_EQ(printed("%.1100e", 1.0).substr(1098), "0000e+00");
}

TEST(PrintfEngine, GeneralNotation)
{
    EXPECT_PRINT("0", "%g", 0.0);
    EXPECT_PRINT("-0", "%g", -0.0);
    EXPECT_PRINT("+0", "%+g", 0.0);
    EXPECT_PRINT("1", "%g", 1.0);
    EXPECT_PRINT("1e-05", "%g", 1e-5);
    EXPECT_PRINT("0.0001", "%g", 0.0001);
    EXPECT_PRINT("0.00012345", "%g", 0.00012345);
    EXPECT_PRINT("123456", "%g", 123456.0);
    EXPECT_PRINT("1.23457e+06", "%g", 1234567.0);
    EXPECT_PRINT("100000", "%g", 100000.0);
    EXPECT_PRINT("1e+06", "%g", 1e6);
    EXPECT_PRINT("1e+06", "%g", 999999.5);
    EXPECT_PRINT("99999.9", "%g", 99999.95);
    EXPECT_PRINT("1e+100", "%g", 1e100);
    EXPECT_PRINT("1E-10", "%G", 1e-10);
    EXPECT_PRINT("1.5E+20", "%G", 1.5e20);
    EXPECT_PRINT("0.3", "%g", 0.1 + 0.2);
    EXPECT_PRINT("1e+02", "%.0g", 123.0);
    EXPECT_PRINT("1e+02", "%.1g", 123.0);
    EXPECT_PRINT("0.5", "%.0g", 0.5);
    EXPECT_PRINT("0.000999", "%.3g", 0.0009995);
    EXPECT_PRINT("      3.14", "%10.3g", 3.14159);
    EXPECT_PRINT("1.5       |", "%-10g|", 1.5);
    EXPECT_PRINT("-0000001.5", "%010g", -1.5);
    EXPECT_PRINT("0.1000000000000000055511151231257827021182", "%.40g", 0.1);
    EXPECT_PRINT("2.2250738585072014e-308", "%.17g", DBL_MIN);
    EXPECT_PRINT("0.5", "%.1500g", 0.5);
}

TEST(PrintfEngine, GeneralNotationAlternateForm)
{
    EXPECT_PRINT("1.00000", "%#g", 1.0);
    EXPECT_PRINT("0.00000", "%#g", 0.0);
    EXPECT_PRINT("1.00000e-05", "%#g", 1e-5);
    EXPECT_PRINT("123456.", "%#g", 123456.0);
    EXPECT_PRINT("1.23457e+06", "%#g", 1234567.0);
    EXPECT_PRINT("1.", "%#.0g", 1.0);
    EXPECT_PRINT("1.", "%#.1g", 1.0);
    EXPECT_PRINT("100.", "%#.3g", 100.0);
    EXPECT_PRINT("10.", "%#.2g", 9.99);
    EXPECT_PRINT("0.000100", "%#.3g", 0.0001);
    EXPECT_PRINT("0.0001", "%#.1g", 0.0001);
    EXPECT_PRINT("0.1", "%#.1g", 0.1);
    EXPECT_PRINT("0.00012", "%#.2g", 0.00012);
    EXPECT_PRINT("1.e-05", "%#.1g", 0.00001);
    EXPECT_PRINT("1.e+04", "%#.0g", 12345.0);
    EXPECT_PRINT("1.2e+04", "%#.2g", 12345.0);
    EXPECT_PRINT("1.0000000000000000000", "%#.20g", 1.0);
    EXPECT_PRINT("-0.000999", "%#.3g", -0.0009995);
    EXPECT_PRINT("  +1.50", "%+#7.3g", 1.5);
    EXPECT_PRINT("+0001.50", "%+#08.3g", 1.5);
    EXPECT_PRINT("1.00000E-10", "%#G", 1e-10);
    const std::string wide = printed("%#.1100g", 0.5);
    EXPECT_EQ(wide.size(), 1102u);
    EXPECT_EQ(wide.substr(0, 3), "0.5");
    EXPECT_EQ(wide.find_first_not_of('0', 3), std::string::npos);
    const std::string wideExponent = printed("%#.1100g", 1e-300);
    EXPECT_EQ(wideExponent.substr(0, 12), "1.0000000000");
    EXPECT_EQ(wideExponent.substr(1096), "00000e-300");
}

TEST(PrintfEngine, ShortestRoundTripDigits)
{
    EXPECT_PRINT("0.10000000000000001", "%.17g", 0.1);
    EXPECT_PRINT("0.30000000000000004", "%.17g", 0.1 + 0.2);
    EXPECT_PRINT("0.33333333333333331", "%.17g", 1.0 / 3);
    EXPECT_PRINT("0.66666666666666663", "%.17g", 2.0 / 3);
    EXPECT_PRINT("9.9999999999999992e+22", "%.17g", 1e23);
    EXPECT_PRINT("1.7976931348623157e+308", "%.17g", DBL_MAX);
    EXPECT_PRINT("4.9406564584124654e-324", "%.17g", std::numeric_limits<double>::denorm_min());
    EXPECT_PRINT("1.2345678901234568e+17", "%.17g", 123456789012345680.0);
    EXPECT_PRINT("9007199254740992", "%.17g", 9007199254740993.0);
    EXPECT_PRINT("1", "%.17g", 1.0);
    EXPECT_PRINT("-2.5", "%.17g", -2.5);

    // Every double comes back from its %.17g text.
    std::mt19937_64 random(17);
    for (int i = 0; i < 2000; ++i) {
        const uint64_t bits = random();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value)) continue;
        const std::string text = printed("%.17g", value);
        double back = 0;
        std::from_chars(text.data(), text.data() + text.size(), back);
        ASSERT_EQ(back, value) << text;
    }
}

TEST(PrintfEngine, HexadecimalFloatingPoint)
{
    EXPECT_PRINT("0x1p+0", "%a", 1.0);
    EXPECT_PRINT("0x1.8p+1", "%a", 3.0);
    EXPECT_PRINT("-0x1p-1", "%a", -0.5);
    EXPECT_PRINT("0x0p+0", "%a", 0.0);
    EXPECT_PRINT("-0x0p+0", "%a", -0.0);
    EXPECT_PRINT("0X1.FEP+7", "%A", 255.0);
    EXPECT_PRINT("0x1.999999999999ap-4", "%a", 0.1);
    EXPECT_PRINT("0x1.fffffffffffffp+1023", "%a", DBL_MAX);
    EXPECT_PRINT("0x1p-1022", "%a", DBL_MIN);
    EXPECT_PRINT("0x0.0000000000001p-1022", "%a", std::numeric_limits<double>::denorm_min());
    EXPECT_PRINT("0x0.8p-1022", "%a", DBL_MIN / 2);
    EXPECT_PRINT("0x1.0p+0", "%.1a", 1.0);
    EXPECT_PRINT("0x1.99ap-4", "%.3a", 0.1);
    EXPECT_PRINT("0x2p+0", "%.0a", 1.5);  // ties go to even
    EXPECT_PRINT("0x1p+1", "%.0a", 2.5);
    EXPECT_PRINT("0x1.0p+0", "%.1a", 1.03125);
    EXPECT_PRINT("0x1.2p+0", "%.1a", 1.09375);
    EXPECT_PRINT("0x1.000000000000000p+0", "%.15a", 1.0);
    EXPECT_PRINT("0x1.p+0", "%#a", 1.0);
    EXPECT_PRINT("0x1.p+0", "%#.0a", 1.0);
    EXPECT_PRINT("0x1.8p+1", "%#a", 3.0);
    EXPECT_PRINT("      0x1p+0", "%12a", 1.0);
    EXPECT_PRINT("0x1p+0      |", "%-12a|", 1.0);
    EXPECT_PRINT("0x00000001p+0", "%013a", 1.0);
    EXPECT_PRINT("-0X0001P+0", "%010A", -1.0);
    EXPECT_PRINT("+0x1p+0", "%+a", 1.0);
    EXPECT_PRINT(" 0x1p+0", "% a", 1.0);
}

TEST(PrintfEngine, InfinityAndNan)
{
    EXPECT_PRINT("inf", "%f", kInfinity);
    EXPECT_PRINT("INF", "%F", kInfinity);
    EXPECT_PRINT("-inf", "%f", -kInfinity);
    EXPECT_PRINT("inf", "%e", kInfinity);
    EXPECT_PRINT("-INF", "%E", -kInfinity);
    EXPECT_PRINT("inf", "%g", kInfinity);
    EXPECT_PRINT("INF", "%G", kInfinity);
    EXPECT_PRINT("inf", "%a", kInfinity);
    EXPECT_PRINT("-INF", "%A", -kInfinity);
    EXPECT_PRINT("+inf", "%+f", kInfinity);
    EXPECT_PRINT(" inf", "% f", kInfinity);
    EXPECT_PRINT("inf", "%#.3f", kInfinity);
    EXPECT_PRINT("  inf", "%05f", kInfinity);  // '0' never pads them
    EXPECT_PRINT("      -inf", "%010e", -kInfinity);
    EXPECT_PRINT("inf   |", "%-6f|", kInfinity);
    EXPECT_PRINT("nan", "%f", kNan);
    EXPECT_PRINT("NAN", "%F", kNan);
    EXPECT_PRINT("nan", "%e", kNan);
    EXPECT_PRINT("NAN", "%G", kNan);
    EXPECT_PRINT("nan", "%.3a", kNan);
    EXPECT_PRINT("-nan", "%f", std::copysign(kNan, -1.0));
    EXPECT_PRINT("-NAN", "%E", std::copysign(kNan, -1.0));
    EXPECT_PRINT("+nan", "%+g", kNan);
    EXPECT_PRINT(" nan", "% g", kNan);
    EXPECT_PRINT("   nan", "%06f", kNan);
    EXPECT_PRINT("inf", "%Lf", std::numeric_limits<long double>::infinity());
    EXPECT_PRINT("-nan", "%Lg", -std::numeric_limits<long double>::quiet_NaN());
}

TEST(PrintfEngine, NegativeZero)
{
    EXPECT_PRINT("-0.000000", "%f", -0.0);
    EXPECT_PRINT("-0.000000e+00", "%e", -0.0);
    EXPECT_PRINT("-0", "%.0f", -0.4);
    EXPECT_PRINT("-0.0", "%.1f", -0.04);
    EXPECT_PRINT("-0000", "%05.0f", -0.0);
}

TEST(PrintfEngine, LongDouble)
{
    EXPECT_PRINT("1.500000", "%Lf", 1.5L);
    EXPECT_PRINT("2.50000", "%.5Lf", 2.5L);
    EXPECT_PRINT("1000000000000000000024696061952.000000", "%Lf", 1e30L);
    EXPECT_PRINT("1.00000000000000000001e-01", "%.20Le", 0.1L);
    EXPECT_PRINT("0.1000000000000000000013553", "%.25Lg", 0.1L);
    EXPECT_PRINT("1.18973e+4932", "%Lg", LDBL_MAX);
    EXPECT_PRINT("3.3621E-4932", "%.5LG", LDBL_MIN);
    EXPECT_PRINT("0x8p-3", "%La", 1.0L);
    EXPECT_PRINT("0xcp-2", "%La", 3.0L);
    EXPECT_PRINT("0XC.CCCCCCCCCCCCCCDP-7", "%LA", 0.1L);
    EXPECT_PRINT("0X8P-16385", "%LA", LDBL_MIN);
    EXPECT_PRINT("   1.2", "%6.1Lf", 1.25L);

    // Past the stack block: the digits come from the library heap.
    const std::string largest = printed("%Lf", LDBL_MAX);
    EXPECT_EQ(largest.size(), 4940u);
    EXPECT_EQ(largest.substr(0, 30), "118973149535723176502126385303");
    EXPECT_EQ(largest.substr(4932), "0.000000");
    const std::string smallest = printed("%.20000Lf", std::numeric_limits<long double>::denorm_min());
    ASSERT_EQ(smallest.size(), 20002u);
    EXPECT_EQ(smallest.find_last_not_of('0'), 16446u);
    EXPECT_EQ(smallest[16446], '5');
}

TEST(PrintfEngine, Pointers)
{
    const void *none = nullptr;
    const auto *some = reinterpret_cast<const void *>(uintptr_t{0xABC});
    EXPECT_PRINT("0000000000000000", "%p", none);
    EXPECT_PRINT("0000000000000ABC", "%p", some);
    EXPECT_PRINT("    0000000000000ABC", "%20p", some);
    EXPECT_PRINT("0000000000000ABC    |", "%-20p|", some);
    EXPECT_PRINT("0000000000000ABC  |", "%*p|", -18, some);
    EXPECT_PRINT("0000000000000ABC", "%5p", some);
    EXPECT_PRINT_UNCHECKED("    0000000000000ABC", "%020p", some);
    EXPECT_PRINT_UNCHECKED("0000000000000ABC", "%.3p", some);
    EXPECT_PRINT_UNCHECKED("0000000000000ABC", "%+#p", some);
}

TEST(PrintfEngine, CountsStoredThroughEverySize)
{
    int plain = -1;
    EXPECT_PRINT("abcd", "ab%ncd", &plain);
    EXPECT_EQ(plain, 2);
    signed char bytes[3] = {7, 7, 7};
    short shorts[3] = {7, 7, 7};
    long along = -1;
    long long longLong = -1;
    intmax_t largest = -1;
    ptrdiff_t difference = -1;
    const std::string text(300, 'x');
    EXPECT_EQ(printed("%s%hhn%hn%ln%lln%jn%tn", text.c_str(), &bytes[1], &shorts[1], &along, &longLong,
                      &largest, &difference),
              text);
    EXPECT_EQ(bytes[0], 7);
    EXPECT_EQ(bytes[1], static_cast<signed char>(300 - 256));  // wrapped to its type
    EXPECT_EQ(bytes[2], 7);
    EXPECT_EQ(shorts[0], 7);
    EXPECT_EQ(shorts[1], 300);
    EXPECT_EQ(shorts[2], 7);
    EXPECT_EQ(along, 300);
    EXPECT_EQ(longLong, 300);
    EXPECT_EQ(largest, 300);
    EXPECT_EQ(difference, 300);

    std::make_signed_t<size_t> sized = -1;
    int64_t wide = -1;
    int32_t narrow = -1;
    intptr_t pointerSized = -1;
    EXPECT_PRINT_UNCHECKED("12345", "1%zn2%I64n3%I32n4%In5", &sized, &wide, &narrow, &pointerSized);
    EXPECT_EQ(sized, 1);
    EXPECT_EQ(wide, 2);
    EXPECT_EQ(narrow, 3);
    EXPECT_EQ(pointerSized, 4);
    // The count is of the whole text, not of what fits.
    char small[4];
    int counted = 0;
    EXPECT_EQ(tollan::services::formatTextInto(small, sizeof small, "%s%n", "abcdefgh", &counted), 8);
    EXPECT_EQ(counted, 8);
}

TEST(PrintfEngine, PercentUnknownAndUnfinishedConversions)
{
    EXPECT_PRINT("100%", "100%%");
    EXPECT_PRINT("%%", "%%%%");
    EXPECT_PRINT("%5", "%%%d", 5);
    EXPECT_PRINT_UNCHECKED("%", "%5%");
    EXPECT_PRINT_UNCHECKED("%7", "%*%%d", 7);  // '*' of %% takes nothing
    EXPECT_PRINT_UNCHECKED("%y", "%y");
    EXPECT_PRINT_UNCHECKED("%5k|3", "%5k|%d", 3);
    EXPECT_PRINT_UNCHECKED("%1$d", "%1$d", 5);
    EXPECT_PRINT_UNCHECKED("%*y 9", "%*y %d", 9);
    EXPECT_PRINT_UNCHECKED("%.*ly 9", "%.*ly %d", 9);
    EXPECT_PRINT_UNCHECKED("%C", "%C");
    EXPECT_PRINT_UNCHECKED("abc%", "abc%");
    EXPECT_PRINT_UNCHECKED("x%-5", "x%-5");
    EXPECT_PRINT_UNCHECKED("%l", "%l");
    EXPECT_PRINT_UNCHECKED("%I64", "%I64");
    EXPECT_PRINT_UNCHECKED("1 %.*", "%d %.*", 1);
    EXPECT_PRINT_UNCHECKED("", "");
    EXPECT_PRINT("no conversions at all", "no conversions at all");
}

// Writes the engine's text through its vsnprintf-style entry with a given size.
std::string bounded(size_t size, int *length, const char *format, ...) TOLLAN_PRINTF(3, 4);
std::string bounded(size_t size, int *length, const char *format, ...)
{
    std::string buffer(size + 1, '#');
    va_list arguments;
    va_start(arguments, format);
    *length = printToBuffer(size > 0 ? buffer.data() : nullptr, size, format, arguments);
    va_end(arguments);
    return buffer;
}

TEST(PrintfEngine, BuffersAreCutTerminatedAndTheLengthIsWhole)
{
    int length = 0;
    EXPECT_EQ(bounded(0, &length, "hello %d", 42), "#");
    EXPECT_EQ(length, 8);
    EXPECT_EQ(bounded(1, &length, "hello %d", 42), std::string("\0#", 2));
    EXPECT_EQ(length, 8);
    EXPECT_EQ(bounded(5, &length, "hello %d", 42), std::string("hell\0#", 6));
    EXPECT_EQ(length, 8);
    EXPECT_EQ(bounded(8, &length, "hello %d", 42), std::string("hello 4\0#", 9));
    EXPECT_EQ(bounded(9, &length, "hello %d", 42), std::string("hello 42\0#", 10));
    EXPECT_EQ(length, 8);
    EXPECT_EQ(bounded(4, &length, "%10.3f", 3.14159), std::string("   \0#", 5));
    EXPECT_EQ(length, 10);
    EXPECT_EQ(bounded(300, &length, "%200s|", "x").substr(195, 8), std::string("    x|\0#", 8));
    EXPECT_EQ(length, 201);
}

// Counts what it is given; fails the put numbered failAt with errno EIO.
class RecordingSink final : public TextSink {
public:
    explicit RecordingSink(int failAt = -1) : failAt_(failAt) {}
    bool put(const char *text, size_t length) noexcept override
    {
        if (static_cast<int>(pieces.size()) == failAt_) {
            errno = EIO;
            return false;
        }
        pieces.emplace_back(text, length);
        return true;
    }
    std::vector<std::string> pieces;

private:
    int failAt_;
};

int printInto(TextSink &sink, const char *format, ...) TOLLAN_PRINTF(2, 3);
int printInto(TextSink &sink, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int length = printFormatted(sink, format, arguments);
    va_end(arguments);
    return length;
}

TEST(PrintfEngine, SinksGetLargePieces)
{
    RecordingSink literal;
    EXPECT_EQ(printInto(literal, "a long literal run %d and its tail", 5), 33);
    EXPECT_EQ(literal.pieces, (std::vector<std::string>{"a long literal run ", "5", " and its tail"}));

    RecordingSink padded;
    EXPECT_EQ(printInto(padded, "%1000d", 1), 1000);
    EXPECT_LE(padded.pieces.size(), 10u);
    EXPECT_EQ(padded.pieces.back(), "1");
}

TEST(PrintfEngine, AFailingSinkStopsTheText)
{
    RecordingSink failing(1);
    errno = 0;
    EXPECT_EQ(printInto(failing, "first %d second", 2), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(failing.pieces, (std::vector<std::string>{"first "}));
}

TEST(PrintfEngine, TextsPastIntMaxOverflow)
{
    EXPECT_PRINT_UNCHECKED(kEoverflow, "x%2147483647d", 1);
    EXPECT_PRINT_UNCHECKED(kEoverflow, "%99999999999d", 1);
    EXPECT_PRINT_UNCHECKED(kEoverflow, "%.2147483648d", 1);
    EXPECT_PRINT_UNCHECKED(kEoverflow, "%*d", INT_MIN, 1);
    EXPECT_PRINT_UNCHECKED(kEoverflow, "%.2147483647f", 1.0);
    // Exactly INT_MAX fits.
    int length = 0;
    bounded(0, &length, "%2147483647d", 1);
    EXPECT_EQ(length, INT_MAX);
}

#ifndef _WIN32
// The C library's printf and the engine must agree on the C99 conversions
// that leave nothing to the implementation. Not under Windows, whose C
// library prints some of them otherwise.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
std::string hostPrinted(const char *format, ...)
{
    char buffer[512];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return std::string(buffer, static_cast<size_t>(length));
}
#pragma GCC diagnostic pop

// "%" with random flags, width and precision, then size and conversion.
std::string randomConversion(std::mt19937_64 &random, const char *sizeAndType)
{
    std::string format = "%";
    for (const char flag : {'-', '+', ' ', '#', '0'})
        if (random() % 4 == 0) format += flag;
    if (random() % 2 == 0) format += std::to_string(random() % 30);
    if (random() % 2 == 0) format += "." + std::to_string(random() % 25);
    return format + sizeAndType;
}

TEST(PrintfEngine, AgreesWithTheHostOnIntegers)
{
    std::mt19937_64 random(99);
    const char *types[] = {"d", "i", "o", "u", "x", "X"};
    for (int i = 0; i < 30000; ++i) {
        const char *type = types[random() % 6];
        const uint64_t bits = random() >> (random() % 64);
        std::string format;
        std::string ours;
        std::string theirs;
        switch (random() % 4) {
            case 0:
                format = randomConversion(random, type);
                ours = printedUnchecked(format.c_str(), static_cast<int>(bits));
                theirs = hostPrinted(format.c_str(), static_cast<int>(bits));
                break;
            case 1:
                format = randomConversion(random, (std::string("hh") + type).c_str());
                ours = printedUnchecked(format.c_str(), static_cast<int>(bits));
                theirs = hostPrinted(format.c_str(), static_cast<int>(bits));
                break;
            case 2:
                format = randomConversion(random, (std::string("h") + type).c_str());
                ours = printedUnchecked(format.c_str(), static_cast<int>(bits));
                theirs = hostPrinted(format.c_str(), static_cast<int>(bits));
                break;
            default:
                format = randomConversion(random, (std::string("ll") + type).c_str());
                ours = printedUnchecked(format.c_str(), static_cast<long long>(bits));
                theirs = hostPrinted(format.c_str(), static_cast<long long>(bits));
                break;
        }
        ASSERT_EQ(ours, theirs) << format << " of " << bits;
    }
}

TEST(PrintfEngine, AgreesWithTheHostOnFloatingPoint)
{
    std::mt19937_64 random(2024);
    const char *types[] = {"e", "E", "f", "F", "g", "G", "a", "A"};
    for (int i = 0; i < 30000; ++i) {
        double value;
        if (i % 2 == 0) {
            const uint64_t bits = random();
            std::memcpy(&value, &bits, sizeof value);
        } else {
            // Ordinary magnitudes, where %f is short and ties are likelier.
            value = std::ldexp(static_cast<double>(random() >> 40), static_cast<int>(random() % 60) - 40);
        }
        const char *type = types[random() % 8];
        if ((*type == 'f' || *type == 'F') && std::fabs(value) > 1e100) continue;
        const std::string format = randomConversion(random, type);
        ASSERT_EQ(printedUnchecked(format.c_str(), value), hostPrinted(format.c_str(), value))
            << format << " of " << value;
    }
}
#endif

}  // namespace
