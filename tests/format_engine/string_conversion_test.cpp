// Strings: the terminator sets each role settles on, Fmt's width, padding
// and offset, and Scan's skipping, limits and j characters.
#include <gtest/gtest.h>

#include <string>

#include "fmtio/fmt_string.h"
#include "fmtio/scan_string.h"
#include "items.h"

namespace tollan::fmtio {
namespace {

using namespace testing;

void clearBit(FormatItem &item, unsigned char c)
{
    item.as.string.characterSet[c >> 3] =
        static_cast<uint8_t>(item.as.string.characterSet[c >> 3] & ~(1u << (c & 7)));
    item.as.string.terminatorSet = 1;
}

TEST(StringSets, EachRoleSettlesItsTerminators)
{
    const FormatItem plain = stringItem();
    const Conversion scanTarget = resolved(plain, Role::scanTarget);
    for (unsigned char c : {'\0', '\t', '\n', '\v', '\f', '\r', ' '})
        EXPECT_FALSE(inCharacterSet(scanTarget, c)) << int{c};
    EXPECT_TRUE(inCharacterSet(scanTarget, ','));
    const Conversion commaTarget = resolved(plain, Role::scanTarget, true);
    EXPECT_FALSE(inCharacterSet(commaTarget, ','));
    EXPECT_TRUE(inCharacterSet(commaTarget, ' '));
    for (Role role : {Role::scanSource, Role::fmtSource}) {
        const Conversion source = resolved(plain, role);
        EXPECT_FALSE(inCharacterSet(source, '\0'));
        EXPECT_TRUE(inCharacterSet(source, ' '));
    }
    FormatItem limited = stringItem();
    clearBit(limited, 'x');
    EXPECT_TRUE(inCharacterSet(resolved(limited, Role::fmtTarget), 'x'));
    EXPECT_FALSE(inCharacterSet(resolved(limited, Role::scanTarget), 'x'));
    EXPECT_TRUE(inCharacterSet(resolved(limited, Role::scanTarget), ' '));
    const Conversion line = resolved(stringItem(1), Role::scanTarget);
    for (unsigned char c : {'\0', '\n', '\r'}) EXPECT_FALSE(inCharacterSet(line, c));
    EXPECT_TRUE(inCharacterSet(line, ' '));
}

struct FormatCase {
    const char *text;
    int64_t width;  // 0: none
    uint32_t offset;
    bool nulPad;  // q
    bool right;   // y
    int stopAt;   // a t character, or 0
    std::string expected;
};

TEST(StringFormat, WidthPadOffsetAndTerminators)
{
    const FormatCase cases[] = {
        {"volts", 8, 0, false, false, 0, "volts   "},
        {"volts", 7, 0, true, false, 0, std::string("volts\0\0", 7)},
        {"volts", 3, 0, false, false, 0, "vol"},
        {"volts", 0, 9, false, false, 0, ""},
        {"a,b", 0, 2, false, false, ',', "b"},
    };
    for (const FormatCase &c : cases) {
        FormatItem item = stringItem();
        if (c.width) setWidth(item, c.width);
        item.iValue = c.offset;
        item.iMarker = c.offset ? FMT_MARKER_LITERAL : FMT_MARKER_DEFAULT;
        item.as.string.qByte = c.nulPad ? 0 : ' ';
        item.as.string.yFlag = c.right;
        if (c.stopAt) clearBit(item, static_cast<unsigned char>(c.stopAt));
        ByteBuffer out;
        EXPECT_EQ(formatString(out, resolved(item, Role::fmtSource), c.text), 0);
        EXPECT_EQ(std::string(out.data(), out.size()), c.expected) << c.text;
    }
}

TEST(StringFormat, WithAWidthNulIsAByteLikeAnyOtherOnceTheSetAllowsIt)
{
    FormatItem item = stringItem();
    item.as.string.terminatorSet = 1;  // t-: the whole set
    setWidth(item, 4);
    ByteBuffer out;
    EXPECT_EQ(formatString(out, resolved(item, Role::fmtSource), "a\0bcd"), 0);
    EXPECT_EQ(std::string(out.data(), out.size()), std::string("a\0bc", 4));
}

struct ScanCase {
    const char *source;
    uint8_t lineFlag;
    int64_t width;
    bool keepSpace;     // y
    const char *jText;  // the item's j characters, or null
    const char *stored;
    size_t consumed;
};

TEST(StringScan, SkippingLimitsAndJCharacters)
{
    const ScanCase cases[] = {
        {"  word rest", 0, 0, false, nullptr, "word", 6},
        {"  word rest", 0, 0, true, nullptr, "", 0},
        {"  line end\r\nnext", 1, 0, false, nullptr, "  line end", 10},
        {"abcdef", 0, 4, false, nullptr, "abcd", 4},
        {"key=value", 0, 0, false, "=", "key", 4},
        {"a--b--", 0, 0, false, "--", "a", 3},
    };
    for (const ScanCase &c : cases) {
        FormatItem item = stringItem(c.lineFlag);
        if (c.width) setWidth(item, c.width);
        item.as.string.yFlag = c.keepSpace;
        Conversion conversion = resolved(item, Role::scanTarget);
        if (c.jText) {
            conversion.separator = c.jText;
            conversion.separatorLength = std::strlen(c.jText);
        }
        ScanText text{c.source, c.source + std::strlen(c.source)};
        char target[32];
        std::memset(target, '#', sizeof target);
        EXPECT_EQ(scanString(text, conversion, target), 0) << c.source;
        EXPECT_STREQ(target, c.stored) << c.source;
        EXPECT_EQ(static_cast<size_t>(text.at - c.source), c.consumed) << c.source;
    }
}

TEST(StringScan, QLeavesTheTargetUnterminatedAndAnEndedSourceLeavesItAlone)
{
    FormatItem item = stringItem();
    item.as.string.qByte = 0;
    const char *source = "ab";
    ScanText text{source, source + 2};
    char target[4] = {'#', '#', '#', '\0'};
    EXPECT_EQ(scanString(text, resolved(item, Role::scanTarget), target), 0);
    EXPECT_STREQ(target, "ab#");
    EXPECT_EQ(scanString(text, resolved(item, Role::scanTarget), target), kSourceEnded);
    EXPECT_STREQ(target, "ab#");
}

}  // namespace
}  // namespace tollan::fmtio
