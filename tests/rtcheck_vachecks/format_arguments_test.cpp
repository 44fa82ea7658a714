// What the printf and scanf engines' parsers say a format takes, in order.
#include <gtest/gtest.h>

#include <string>

#include "stdc/format_argument_types.h"

namespace {

using tollan::stdc::ArgumentType;
using tollan::stdc::FormatFamily;
using tollan::stdc::FormatStep;

// One letter per type (i int, u unsigned, l long, L unsigned long, q long
// long, Q unsigned long long, b signed char, B unsigned char, h short, H
// unsigned short, c char, w wchar_t, f float, d double, D long double, v void,
// z size_t, t ptrdiff_t, j intmax_t), one '*' per pointer level, then '!'
// when the format is malformed.
std::string walk(const char *format, FormatFamily family)
{
    static const char kLetters[] = "iulLqQbBhHcwfdDvztjJ";
    std::string out;
    const char *cursor = format;
    tollan::stdc::FormatArgument arguments[tollan::stdc::kMostArgumentsPerConversion];
    int count = 0;
    for (;;) {
        const FormatStep step = tollan::stdc::nextFormatArguments(&cursor, family, arguments, &count);
        if (step == FormatStep::end) return out;
        if (step == FormatStep::malformed) return out + "!";
        for (int i = 0; i < count; ++i) {
            out += kLetters[static_cast<int>(arguments[i].type)];
            out.append(arguments[i].indirection, '*');
        }
    }
}

TEST(FormatArguments, PrintfTakesWhatItsEngineFetches)
{
    const struct {
        const char *format;
        const char *arguments;
    } rows[] = {
        {"%d %i %u %x %o %X", "iiuuuu"},
        {"%hhd %hu %ld %lu %lld %llx %Lx", "iulLqQQ"},
        {"%jd %ju %zu %zd %td %Iu %I64d %I32u", "jJzttzqu"},
        {"%f %Le %c %lc %s %ls %p", "dDiic*w*v*"},
        {"%n %hhn %hn %ln %lln %zn", "i*b*h*l*q*t*"},
        {"%*.*f %-*d %.*s", "iidiiic*"},
        {"%% %5% %y %1$d text", ""},  // known only: the engine prints the rest as it stands
        {"%d %", "i"},                // a format that ends inside a conversion takes nothing more
        {"", ""},
    };
    for (const auto &row : rows)
        EXPECT_EQ(walk(row.format, FormatFamily::printf), row.arguments) << row.format;
}

TEST(FormatArguments, ScanfStoresThroughPointers)
{
    const struct {
        const char *format;
        const char *arguments;
    } rows[] = {
        {"%d %i %u %x %n", "i*i*u*u*i*"},
        {"%hhd %hhu %hd %ld %lld %jd %zu %td %I64d %I32d", "b*B*h*l*q*j*z*t*q*i*"},
        {"%f %lf %Lf %e %g %a", "f*d*D*f*f*f*"},
        {"%c %5s %[a-z] %ls %l[^,] %p", "c*c*c*w*w*v**"},
        {"%*d %% %*s %d", "i*"},
        {"%d %hf %d", "i*!"},  // h does not go with f: the engine stops there
        {"%d %0d", "i*!"},
        {"%d %[abc", "i*!"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(walk(row.format, FormatFamily::scanf), row.arguments) << row.format;
}

TEST(FormatArguments, NullCursorEndsAtOnce)
{
    tollan::stdc::FormatArgument arguments[tollan::stdc::kMostArgumentsPerConversion];
    int count = 7;
    const char *cursor = nullptr;
    EXPECT_EQ(tollan::stdc::nextFormatArguments(&cursor, FormatFamily::scanf, arguments, &count),
              FormatStep::end);
    EXPECT_EQ(tollan::stdc::nextFormatArguments(nullptr, FormatFamily::printf, arguments, &count),
              FormatStep::end);
    EXPECT_EQ(count, 0);
}

}  // namespace
