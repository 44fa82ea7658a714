// Byte and string utilities.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <tollan/fmtio.h>

#include "fmtio/library.h"

TEST(FmtioCompare, BytesGiveExactlyMinusOneZeroOrOneAndFoldCaseWhenAsked)
{
    const unsigned char low[] = {0x01, 'a'};
    const unsigned char high[] = {0xFF, 'a'};
    EXPECT_EQ(CompareBytes(low, 0, high, 0, 2, 1), -1);
    EXPECT_EQ(CompareBytes(high, 0, low, 0, 2, 1), 1);
    EXPECT_EQ(CompareBytes("xyz", 0, "abc", 0, 0, 1), 0);
    EXPECT_EQ(CompareBytes("xyz", 0, "abc", 0, 0, 0), 0);
    EXPECT_EQ(CompareBytes("..abc", 2, "abc", 0, 3, 1), 0);
    // Case-blind comparison orders by upper case.
    EXPECT_EQ(CompareBytes("HeLLo", 0, "hello", 0, 5, 0), 0);
    EXPECT_EQ(CompareBytes("HeLLo", 0, "hello", 0, 5, 1), -1);
    // 'a' sorts below '[' once folded ('A' is 65, '[' 91), above it as it stands.
    EXPECT_EQ(CompareBytes("a", 0, "[", 0, 1, 0), -1);
    EXPECT_EQ(CompareBytes("a", 0, "[", 0, 1, 1), 1);
    EXPECT_EQ(CompareBytes("abD", 0, "ABc", 0, 3, 0), 1);
}

TEST(FmtioCompare, StringsStopAtTheFirstStringsEnd)
{
    EXPECT_EQ(CompareStrings("abc", 0, "ABC", 0, 0), 0);
    EXPECT_EQ(CompareStrings("abc", 0, "ABC", 0, 1), 1);
    EXPECT_EQ(CompareStrings("ab", 0, "ABC", 0, 0), -1);
    EXPECT_EQ(CompareStrings("abc", 0, "AB", 0, 0), 1);
    EXPECT_EQ(CompareStrings("a", 0, "[", 0, 0), -1);
    EXPECT_EQ(CompareStrings("a", 0, "[", 0, 1), 1);
    EXPECT_EQ(CompareStrings("xxKey", 2, "key", 0, 0), 0);
    EXPECT_EQ(CompareStrings("", 0, "", 0, 0), 0);
}

TEST(FmtioCopy, OverlappingCopiesKeepTheSourceAndStringsEndInAZero)
{
    char forward[] = "0123456789";
    CopyBytes(forward, 0, forward, 2, 5);
    EXPECT_STREQ(forward, "2345656789");
    char backward[] = "0123456789";
    CopyBytes(backward, 2, backward, 0, 5);
    EXPECT_STREQ(backward, "0101234789");
    char untouched[] = "abc";
    CopyBytes(untouched, 0, "xyz", 0, 0);
    EXPECT_STREQ(untouched, "abc");

    // CopyString always terminates.
    char target[16];
    std::memset(target, '#', sizeof target);
    CopyString(target, 1, "hello", 0, 0);
    EXPECT_EQ(target[0], '#');
    EXPECT_EQ(target[1], '\0');
    CopyString(target, 0, "hello", 1, 3);
    EXPECT_STREQ(target, "ell");
    CopyString(target, 0, "hello", 0, 99);
    EXPECT_STREQ(target, "hello");
    CopyString(target, 0, "hello", 0, -1);
    EXPECT_STREQ(target, "hello");

    char shifting[16] = "abcdef";
    CopyString(shifting, 2, shifting, 0, -1);
    EXPECT_STREQ(shifting, "ababcdef");

    // FillBytes sets only the range.
    char buffer[] = "abcdef";
    FillBytes(buffer, 1, 3, 0x100 + '*');
    EXPECT_STREQ(buffer, "a***ef");
    FillBytes(buffer, 0, 0, 'z');
    EXPECT_STREQ(buffer, "a***ef");
}

TEST(FmtioFindPattern, IndexIncludesTheStartIndexAndImpossibleMatchesAreRefused)
{
    const char *text = "abcabcABC";
    EXPECT_EQ(FindPattern(text, 0, -1, "abc", 1, 0), 0);
    EXPECT_EQ(FindPattern(text, 1, -1, "abc", 1, 0), 3);
    EXPECT_EQ(FindPattern(text, 0, -1, "abc", 1, 1), 3);
    EXPECT_EQ(FindPattern(text, 0, -1, "abc", 0, 1), 6);
    EXPECT_EQ(FindPattern(text, 2, 7, "ABC", 1, 1), 6);  // a match ending on the last byte
    EXPECT_EQ(FindPattern(text, 2, 6, "ABC", 1, 0), -1);
    EXPECT_EQ(FindPattern(text, 0, 3, "abc", 1, 1), 0);

    // What cannot match is refused.
    EXPECT_EQ(FindPattern("abc", 0, -1, "", 1, 0), -1);
    EXPECT_EQ(FindPattern("abc", 0, -1, "abcd", 1, 0), -1);
    EXPECT_EQ(FindPattern("abc", 0, 2, "abc", 1, 0), -1);
    EXPECT_EQ(FindPattern("abc", 0, -2, "a", 1, 0), -1);
    EXPECT_EQ(FindPattern("abc", 0, int64_t{1} << 32, "a", 1, 0), -1);
    EXPECT_EQ(FindPattern("abc", 0, -1, "x", 0, 1), -1);
    // The byte count, not the terminator, bounds the range.
    EXPECT_EQ(FindPattern("ab\0cd", 0, 5, "cd", 1, 0), 3);
}

TEST(FmtioStrings, LengthAndCase)
{
    ASSERT_TRUE(tollan::fmtio::FmtIOLibInitOnce());
    EXPECT_EQ(StringLength("hello"), 5);
    EXPECT_EQ(StringLength(""), 0);
    EXPECT_EQ(StringLength(nullptr), -1);
    EXPECT_EQ(GetFmtIOError(), 7);

    char text[] = "Hello, World 42 \xC4";
    StringUpperCase(text);
    EXPECT_STREQ(text, "HELLO, WORLD 42 \xC4");
    StringLowerCase(text);
    EXPECT_STREQ(text, "hello, world 42 \xC4");
}
