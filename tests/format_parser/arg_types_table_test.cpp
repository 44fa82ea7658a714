// generate_arg_types against a table of format strings: the argument table
// each one asks for, or the message number and the offset of its error.
#include <gtest/gtest.h>

#include <cstring>

#include <tollan/fmtio.h>

#include "format_parser/format_table.h"

namespace {

using tollan::testing::describeTable;
using tollan::testing::Family;
using tollan::testing::kFmt;
using tollan::testing::kScan;

struct Case {
    const char *format;
    Family family;
    int32_t result;     // the count, or the negated offset of the error
    int32_t errorCode;  // 0 for a format that parses
    const char *table;  // describeTable of the entries (parsed formats only)
};

constexpr Case kCases[] = {
    // The two halves, and a format without a first item.
    {"%s<%d", kFmt, 2, 0, "s1 i4"},
    {"%d", kFmt, 2, 0, "s1 i4"},
    {"<%d", kFmt, 2, 0, "s1 i4"},
    {"", kFmt, 1, 0, "s1"},
    {"", kScan, 1, 0, "s1"},
    {">%d%f", kScan, 3, 0, "s1 i4 f8"},
    {"%s>%d", kScan, 2, 0, "s1 i4"},
    {"%d<", kFmt, 1, 0, "i4"},
    {"abc%d", kFmt, 2, 0, "s1 i4"},
    {"%s>%d%s%f%l", kScan, 5, 0, "s1 i4 s1 f8 s1"},
    {"%i%o%x", kScan, 4, 0, "s1 i4 i4 i4"},
    // The first item's own entry comes first, then its '*' integers.
    {"%*d[w*]<%s", kFmt, 4, 0, "ia4 i4* i4* s1"},
    {"%f[p*e*w*]<%d", kFmt, 5, 0, "f8 i4* i4* i4* i4"},
    {"%s[i*]>%*d", kScan, 4, 0, "s1 i4* i4* ia4"},
    {"%s<%*d[w*]", kFmt, 4, 0, "s1 i4* i4* ia4"},
    {"%*d[w*]", kFmt, 4, 0, "s1 i4* i4* ia4"},
    // Literals and escapes.
    {"%%<", kFmt, 0, 0, ""},
    {"%<", kFmt, 1, 0, "s1"},
    {"%s<%%%d", kFmt, 2, 0, "s1 i4"},
    {"%s<%[x%]%<%>", kFmt, 1, 0, "s1"},
    {"a<%d", kFmt, 1, 0, "i4"},
    {"x[y]z>%d", kScan, 1, 0, "i4"},
    {"%<a<%d", kFmt, 1, 0, "i4"},
    // Sizes, arrays, discards, z items.
    {"%s<%d[b0]", kFmt, 2, 0, "s1 i8"},
    {"%s<%d[b1]%d[b2]%x[b3]", kFmt, 4, 0, "s1 i1 i2 i3"},
    {"%s<%10d%3f%0x", kFmt, 4, 0, "s1 ia4 fa8 ia4"},
    {"%s>%d[d]%s[d]%f[d]%d", kScan, 2, 0, "s1 i4"},
    {"%d[d]>%d", kScan, 1, 0, "i4"},
    {"%s<%3d[z]%2f[zb4]", kFmt, 3, 0, "s1 sa4 sa4"},
    {"%s>%3c[z]", kScan, 2, 0, "s1 sa1"},
    // A character and a float arrive promoted as Fmt sources.
    {"%s<%c", kFmt, 2, 0, "s1 i4"},
    {"%s<%c[b1]", kFmt, 2, 0, "s1 i4"},
    {"%c<%s", kFmt, 2, 0, "i1 s1"},
    {"%s<%3c", kFmt, 2, 0, "s1 ia1"},
    {"%s>%c", kScan, 2, 0, "s1 i1"},
    {"%s<%f[b4]", kFmt, 2, 0, "s1 f8"},
    {"%s<%2f[b4]", kFmt, 2, 0, "s1 fa4"},
    {"%f[b4]<%s", kFmt, 2, 0, "f4 s1"},
    {"%s>%f[b4]", kScan, 2, 0, "s1 f4"},
    // Every modifier of each kind.
    {"%s<%x[b2o10p0r16usw5xi3j4]", kFmt, 2, 0, "s1 i2"},
    {"%s<%d[b8o01230123]", kFmt, 2, 0, "s1 i8"},
    {"%s<%d[o]", kFmt, 2, 0, "s1 i4"},
    {"%s<%d[p]]", kFmt, 2, 0, "s1 i4"},
    {"%s<%d[p[]", kFmt, 2, 0, "s1 i4"},
    {"%s<%f[e2p3rtw10xfi1j0b8]", kFmt, 2, 0, "s1 f8"},
    {"%s<%f[e]%f[e*]", kFmt, 4, 0, "s1 f8 i4* f8"},
    {"%s>%s[aqt#t-t10t300w5xyi2j0]%l[c]", kScan, 3, 0, "s1 s1 s1"},
    {"%s<%d[]", kFmt, 2, 0, "s1 i4"},
    {"%s<%d[r*i*w*]", kFmt, 5, 0, "s1 i4* i4* i4* i4"},
    {"%s<%d[j256]", kFmt, 2, 0, "s1 i4"},
    // The j skip.
    {"%s[j2]>%d%d", kScan, 2, 0, "s1 i4"},
    {"%s<%d[j2]<<%d", kFmt, 3, 0, "s1 i4 i4"},
    {"%s<%d[j100]ab", kFmt, 2, 0, "s1 i4"},
    {"%s<%d[j0]%d", kFmt, 3, 0, "s1 i4 i4"},
    // 206: separators out of place.
    {"%s<a<b", kFmt, -4, 206, nullptr},
    {"a>b", kFmt, -1, 206, nullptr},
    {">", kFmt, 0, 206, nullptr},
    {"%s>%d>x", kScan, -5, 206, nullptr},
    {"%s<", kScan, -2, 206, nullptr},
    {"%s<%d>", kFmt, -5, 206, nullptr},
    {"%d%s<", kFmt, -4, 206, nullptr},
    // 207: a number that is not there.
    {"%d[w]", kFmt, -4, 207, nullptr},
    {"%d[w 5]", kFmt, -4, 207, nullptr},
    {"%s[t]", kScan, -4, 207, nullptr},
    {"%f[p-1]", kFmt, -4, 207, nullptr},
    {"%s[i]", kFmt, -4, 207, nullptr},
    // 208: a count no argument may give.
    {"%d[b*]", kFmt, -4, 208, nullptr},
    {"%d[j*]", kFmt, -4, 208, nullptr},
    {"%f[b*]", kFmt, -4, 208, nullptr},
    {"%s[t*]", kScan, -4, 208, nullptr},
    // 209: digits that run to the end, or a number too big.
    {"%12", kFmt, -1, 209, nullptr},
    {"%d[w12", kFmt, -4, 209, nullptr},
    {"%s[t65", kScan, -4, 209, nullptr},
    {"%99999999999d", kFmt, -1, 209, nullptr},
    {"%d[w2147483648]", kFmt, -4, 209, nullptr},
    // 210 to 213.
    {"%5s", kFmt, -2, 210, nullptr},
    {"%*s", kFmt, -2, 210, nullptr},
    {"%s>%3l", kScan, -5, 210, nullptr},
    {"%l", kFmt, -1, 211, nullptr},
    {"%s<%5l", kFmt, -5, 211, nullptr},
    {"%d[", kFmt, -3, 212, nullptr},
    {"%f[e", kFmt, -4, 212, nullptr},
    {"%d[p", kFmt, -4, 212, nullptr},
    {"%d[x", kFmt, -4, 212, nullptr},
    {"%d[o10b4]", kFmt, -6, 213, nullptr},
    // 214 to 218.
    {"%d[b9]", kFmt, -3, 214, nullptr},
    {"%d[j257]", kFmt, -3, 214, nullptr},
    {"%d[d]", kFmt, -3, 215, nullptr},
    {"%s<%s[d]", kFmt, -6, 215, nullptr},
    {"%f[d]", kFmt, -3, 215, nullptr},
    {"%d[b2o012]", kFmt, -8, 216, nullptr},
    {"%d[o0o1]", kFmt, -5, 216, nullptr},
    {"%d[b8o4]", kFmt, -6, 216, nullptr},
    {"%d[o01234]", kFmt, -8, 216, nullptr},
    {"%d[b1o1]", kFmt, -6, 216, nullptr},
    {"%d[z]", kFmt, -3, 217, nullptr},
    {"%f[z]", kFmt, -3, 217, nullptr},
    {"%d[a]", kFmt, -3, 218, nullptr},
    {"%d[A]", kFmt, -3, 218, nullptr},
    {"%d[ ]", kFmt, -3, 218, nullptr},
    {"%f[o]", kFmt, -3, 218, nullptr},
    {"%s[b]", kScan, -3, 218, nullptr},
    {"%s[z]", kScan, -3, 218, nullptr},
    {"%d[5]", kFmt, -3, 218, nullptr},
    // 219 to 223.
    {"%", kFmt, -1, 219, nullptr},
    {"%s<%", kFmt, -4, 219, nullptr},
    {"%*", kFmt, -2, 219, nullptr},
    {"%s[", kScan, -3, 219, nullptr},
    {"%s[w", kScan, -4, 219, nullptr},
    {"%s[t", kScan, -4, 219, nullptr},
    {"%s[c]", kFmt, -3, 220, nullptr},
    {"%l[w5]", kScan, -3, 221, nullptr},
    {"%f[b2]", kFmt, -3, 222, nullptr},
    {"%f[b0]", kFmt, -3, 222, nullptr},
    {"%q", kFmt, -1, 223, nullptr},
    {"% d", kFmt, -1, 223, nullptr},
    {"%D", kFmt, -1, 223, nullptr},
    {"%s<%d%u", kFmt, -6, 223, nullptr},
};

TEST(FormatArgTypes, ConformanceTable)
{
    for (const Case &row : kCases) {
        SCOPED_TRACE(std::string(row.family == kScan ? "Scan " : "Fmt ") + '"' + row.format + '"');
        ArgTypeEntry table[TOLLAN_FMT_MAX_ARGS] = {};
        int32_t errorCode = -1;
        const int32_t result =
            generate_arg_types(row.format, std::strlen(row.format), table, row.family, &errorCode);
        EXPECT_EQ(result, row.result);
        EXPECT_EQ(errorCode, row.errorCode);
        if (row.table != nullptr && result >= 0) {
            EXPECT_EQ(describeTable(table, result), row.table);
        }
        // Counting alone gives the same result.
        EXPECT_EQ(generate_arg_types(row.format, std::strlen(row.format), nullptr, row.family, nullptr),
                  row.result);
    }
}

}  // namespace
