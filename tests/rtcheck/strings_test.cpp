// Interned strings and the token texts.
#include <climits>
#include <cstring>
#include <string>
#include <utility>

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

TEST(Tokens, NamedCodesHaveTheirTextsAndTheRestAreRefused)
{
    // A sample from each part of the table: keywords, the grammar's own
    // tokens (misspelling kept), punctuation, two-character operators and
    // the extensions.
    const std::pair<int32_t, const char *> kSample[] = {
        {1, "float"},
        {19, "restrict"},
        {22, "eat preceedng comma"},
        {24, "##"},
        {33, "!"},
        {39, "++"},
        {57, "<<"},
        {86, "..."},
        {113, "unsigned long long"},
        {116, "_Pragma"},
        {127, "end of input"},
    };
    for (const auto &[code, text] : kSample) EXPECT_STREQ(tokenrep(code), text) << code;

    tollan::testing::LogCapture log;
    size_t empty = 0;
    for (int32_t code = 0; code < 128; ++code) {
        if (tokenrep(code)[0] == '\0') ++empty;
    }
    EXPECT_EQ(empty, 27u);  // 101 of the 128 rows have a text
    EXPECT_EQ(log.count("FATAL|c/output|tokenrep|Assertion failed: tokens[t&0177]"), empty);
}

TEST(Tokens, CodesAreTakenModulo128)
{
    EXPECT_STREQ(tokenrep(128 + 5), "int");
    EXPECT_STREQ(tokenrep(-1), "end of input");
}

}  // namespace
