// The engine's small text helpers: command-line splitting, length-prefixed
// strings and the character-class table.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "engine/command_line.h"
#include "engine/pascal_string.h"

namespace {

using namespace tollan::engine;

// A two-byte code page whose lead bytes are 0x81..0x9F.
bool leadByte(unsigned char byte) noexcept
{
    return byte >= 0x81 && byte <= 0x9F;
}

std::vector<std::string> split(std::string text, LeadBytePredicate isLeadByte = nullptr)
{
    CommandLineArguments arguments;
    EXPECT_TRUE(ParseCommandLine(text.data(), isLeadByte, &arguments));
    std::vector<std::string> result(arguments.argv, arguments.argv + arguments.argc);
    if (arguments.argc > 0) {
        EXPECT_EQ(arguments.argv[arguments.argc], nullptr);
    }
    freeArguments(&arguments);
    return result;
}

using Args = std::vector<std::string>;

TEST(CommandLine, SplitsAtBlanksKeepsQuotedBlanksAndRunsAnOpenQuoteToTheEnd)
{
    EXPECT_EQ(split("prog  -x\t\"a b\"  c"), (Args{"prog", "-x", "a b", "c"}));
    EXPECT_EQ(split("\"\" x"), (Args{"", "x"}));
    EXPECT_EQ(split("\"ab\"cd"), (Args{"ab", "cd"}));
    // An unterminated quote runs to the end.
    EXPECT_EQ(split("one \"two three"), (Args{"one", "two three"}));
    EXPECT_EQ(split("\""), (Args{""}));
}

TEST(CommandLine, AnEmptyOrBlankLineHasNoArguments)
{
    std::string empty;
    CommandLineArguments arguments;
    ASSERT_TRUE(ParseCommandLine(empty.data(), nullptr, &arguments));
    EXPECT_EQ(arguments.argc, 0);
    EXPECT_EQ(arguments.argv, nullptr);
    EXPECT_TRUE(split("  \t ").empty());
}

TEST(CommandLine, UnderAMultibyteCodePageATrailByteNeverEndsAnArgument)
{
    // 0x81 is a lead byte: the quote and the blank after it are its trail bytes.
    EXPECT_EQ(split("\"a\x81\"b\" c", leadByte), (Args{"a\x81\"b", "c"}));
    EXPECT_EQ(split("x\x81 y", leadByte), (Args{"x\x81 y"}));
    EXPECT_EQ(split("x\x81 y"), (Args{"x\x81", "y"}));
}

std::string pascal(const std::string &text, LeadBytePredicate isLeadByte = nullptr)
{
    unsigned char buffer[256] = {};
    const int length = CToPStr(buffer, text.c_str(), isLeadByte);
    EXPECT_EQ(length, buffer[0]);
    return std::string(reinterpret_cast<const char *>(buffer + 1), buffer[0]);
}

TEST(PascalString, CopiesAndClampsTo255BytesNeverSplittingATwoByteCharacter)
{
    EXPECT_EQ(pascal("zor"), "zor");
    EXPECT_EQ(pascal(""), "");
    EXPECT_EQ(pascal(std::string(255, 'a')), std::string(255, 'a'));
    EXPECT_EQ(pascal(std::string(300, 'a')), std::string(255, 'a'));

    // A two-byte character is never split.
    const std::string leadAt255 = std::string(254, 'a') + "\x81x" + "tail";
    EXPECT_EQ(pascal(leadAt255, leadByte), std::string(254, 'a'));
    EXPECT_EQ(pascal(leadAt255), leadAt255.substr(0, 255));  // single-byte code page
    const std::string leadAt254 = std::string(253, 'a') + "\x81x" + "tail";
    EXPECT_EQ(pascal(leadAt254, leadByte), leadAt254.substr(0, 255));
}

}  // namespace
