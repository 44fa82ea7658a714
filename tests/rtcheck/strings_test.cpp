// Interned strings and the token texts.
#include <climits>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <tollan/rtcheck.h>

#include "fixtures/log_capture.h"
#include "rtcheck/strings.h"

using tollan::rtcheck::string;
using tollan::rtcheck::stringn;

namespace {

TEST(InternedStrings, EqualTextsShareOneCopy)
{
    std::string a = "identifier_one";
    std::string b = "identifier_one";
    const char *first = string(a.c_str());
    EXPECT_NE(first, a.c_str());
    EXPECT_STREQ(first, "identifier_one");
    EXPECT_EQ(string(b.c_str()), first);
    EXPECT_EQ(stringn("identifier_one_and_more", 14), first);
    EXPECT_NE(string("identifier_on"), first);  // a prefix is another string
    EXPECT_EQ(string(nullptr), nullptr);
}

TEST(InternedStrings, EmptyAndSmallNumbersComeFromFixedTables)
{
    EXPECT_EQ(string(""), string(std::string().c_str()));
    EXPECT_EQ(stringn("xyz", 0), string(""));

    // The fixed table is one block: "7" and "42" lie inside it, 3 bytes a row.
    const char *zero = string("0");
    const char *seven = string("7");
    const char *fortyTwo = string("42");
    EXPECT_EQ(seven, zero + 7 * 3);
    EXPECT_EQ(fortyTwo, zero + 42 * 3);
    EXPECT_EQ(string("99"), zero + 99 * 3);
    // A leading zero or a third digit is hashed like any other text.
    const char *leadingZero = string("07");
    EXPECT_STREQ(leadingZero, "07");
    EXPECT_FALSE(leadingZero >= zero && leadingZero < zero + 300);
    EXPECT_EQ(string("07"), leadingZero);
    const char *hundred = string("100");
    EXPECT_FALSE(hundred >= zero && hundred < zero + 300);
}

TEST(InternedStrings, ManyDistinctTextsSurviveNewPools)
{
    // Enough text to fill several 8 KiB pools, plus one longer than a pool.
    std::vector<const char *> kept;
    kept.reserve(5000);
    for (int i = 0; i < 5000; ++i) kept.push_back(string(("name_" + std::to_string(i)).c_str()));
    const std::string big(20000, 'x');
    const char *bigCopy = string(big.c_str());
    ASSERT_NE(bigCopy, nullptr);
    EXPECT_EQ(std::strlen(bigCopy), big.size());
    for (int i = 0; i < 5000; ++i) {
        const std::string text = "name_" + std::to_string(i);
        ASSERT_STREQ(kept[static_cast<size_t>(i)], text.c_str());
        ASSERT_EQ(string(text.c_str()), kept[static_cast<size_t>(i)]);
    }
    EXPECT_EQ(string(big.c_str()), bigCopy);
}

TEST(InternedStrings, TooLongIsRefused)
{
    tollan::testing::LogCapture log;
    // The length is checked before a byte is read.
    EXPECT_EQ(stringn("short", static_cast<size_t>(INT_MAX)), nullptr);
    EXPECT_EQ(log.count("FATAL|c/string|stringn|Assertion failed: s - str < INT_MAX (string too long for "
                        "structure)"),
              1u);
}

struct TokenRow {
    int32_t code;
    const char *text;
};

const TokenRow kTokenRows[] = {
    {1, "float"},
    {2, "double"},
    {3, "char"},
    {4, "short"},
    {5, "int"},
    {6, "unsigned"},
    {8, "void"},
    {9, "struct"},
    {10, "union"},
    {13, "enum"},
    {14, "long"},
    {15, "const"},
    {16, "volatile"},
    {19, "restrict"},
    {20, "white space"},
    {21, "newline"},
    {22, "eat preceedng comma"},
    {23, "preprocessing number"},
    {24, "##"},
    {25, "splice"},
    {26, "raw characters"},
    {27, "floating constant"},
    {28, "integer constant"},
    {29, "character constant"},
    {30, "string constant"},
    {31, "macro identifier"},
    {32, "identifier"},
    {33, "!"},
    {35, "#"},
    {37, "%"},
    {38, "&"},
    {39, "++"},
    {40, "("},
    {41, ")"},
    {42, "*"},
    {43, "+"},
    {44, ","},
    {45, "-"},
    {46, "."},
    {47, "/"},
    {48, "--"},
    {49, "->"},
    {50, "&&"},
    {51, "||"},
    {52, "<="},
    {53, "=="},
    {54, "!="},
    {55, ">="},
    {56, ">>"},
    {57, "<<"},
    {58, ":"},
    {59, ";"},
    {60, "<"},
    {61, "="},
    {62, ">"},
    {63, "?"},
    {65, "sizeof"},
    {66, "asm"},
    {67, "auto"},
    {68, "break"},
    {69, "case"},
    {70, "continue"},
    {71, "default"},
    {72, "do"},
    {73, "else"},
    {74, "extern"},
    {75, "for"},
    {76, "goto"},
    {77, "if"},
    {78, "register"},
    {79, "return"},
    {80, "signed"},
    {81, "static"},
    {82, "switch"},
    {83, "typedef"},
    {84, "while"},
    {86, "..."},
    {91, "["},
    {93, "]"},
    {94, "^"},
    {100, "__pascal"},
    {101, "__stdcall"},
    {102, "__cdecl"},
    {103, "_export"},
    {104, "_import"},
    {105, "dllexport"},
    {106, "dllimport"},
    {107, "__declspec"},
    {108, "__thread"},
    {109, "thread"},
    {110, "__naked"},
    {112, "long long"},
    {113, "unsigned long long"},
    {114, "inline"},
    {115, "__fastcall"},
    {116, "_Pragma"},
    {123, "{"},
    {124, "|"},
    {125, "}"},
    {126, "~"},
    {127, "end of input"},
};

TEST(Tokens, EveryCodeHasItsTextAndNoOtherCodeHasOne)
{
    tollan::testing::LogCapture log;
    bool named[128] = {};
    for (const TokenRow &row : kTokenRows) {
        EXPECT_STREQ(tokenrep(row.code), row.text) << row.code;
        named[row.code] = true;
    }
    EXPECT_EQ(log.count("Assertion failed"), 0u);
    size_t empty = 0;
    for (int32_t code = 0; code < 128; ++code) {
        if (named[code]) continue;
        EXPECT_STREQ(tokenrep(code), "") << code;
        ++empty;
    }
    EXPECT_EQ(log.count("FATAL|c/output|tokenrep|Assertion failed: tokens[t&0177]"), empty);
}

TEST(Tokens, CodesAreTakenModulo128)
{
    EXPECT_STREQ(tokenrep(128 + 5), "int");
    EXPECT_STREQ(tokenrep(-1), "end of input");
}

}  // namespace
