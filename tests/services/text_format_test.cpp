// The library's printf for its own texts, whose %p prints as Windows prints it.
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>
#include <string>

#include "services/text_format.h"

namespace {

using tollan::services::formatText;
using tollan::services::pointerText;

std::string format(size_t size, const char *text, ...) TOLLAN_PRINTF(2, 3);
std::string format(size_t size, const char *text, ...)
{
    std::string buffer(size, '#');
    va_list args;
    va_start(args, text);
    const int length = formatText(buffer.data(), size, text, args);
    va_end(args);
    return std::to_string(length) + ":" + buffer.substr(0, buffer.find('\0'));
}

const void *pointer(uintptr_t value)
{
    return reinterpret_cast<const void *>(value);
}

TEST(TextFormat, PointersAreSixteenUpperCaseDigitsWithoutPrefix)
{
    EXPECT_STREQ(pointerText(nullptr).text, "0000000000000000");
    EXPECT_STREQ(pointerText(pointer(0x7f3a5c0012f0)).text, "00007F3A5C0012F0");
    EXPECT_STREQ(pointerText(pointer(UINTPTR_MAX)).text, "FFFFFFFFFFFFFFFF");
    EXPECT_EQ(
        format(100, "WinMain hInstance=0x%p hPrevInstance=0x%p nCmdShow=0x%x", pointer(0xabc), nullptr, 10),
        "82:WinMain hInstance=0x0000000000000ABC hPrevInstance=0x0000000000000000 nCmdShow=0xa");
    EXPECT_EQ(format(100, "[%20p][%-18p][%*p]", pointer(1), pointer(2), -17, pointer(3)),
              "61:[    0000000000000001][0000000000000002  ][0000000000000003 ]");
}

TEST(TextFormat, EveryOtherConversionTakesItsOwnArgument)
{
    long long big = -1234567890123LL;
    int counted = 0;
    EXPECT_EQ(
        format(200, "%d|%5ld|%lld|%zu|%hhd|%#o|%X|%c|%-4s|%.2f|%Le|%*.*f|%%|%p|%n%s", -7, 42L, big, size_t{9},
               300, 8u, 255u, 'z', "ab", 2.5, 1.5L, 7, 1, 3.25, pointer(0xff), &counted, "end"),
        "91:-7|   42|-1234567890123|9|44|010|FF|z|ab  |2.50|1.500000e+00|    3.2|%|00000000000000FF|end");
    EXPECT_EQ(counted, 88);
    EXPECT_EQ(format(50, "%s %d", "plain", 3), "7:plain 3");
}

TEST(TextFormat, ShortBuffersAreCutAndTerminatedButTheLengthIsWhole)
{
    EXPECT_EQ(format(8, "at %p", nullptr), "19:at 0000");
    EXPECT_EQ(format(1, "%p", nullptr), "16:");
}

}  // namespace
