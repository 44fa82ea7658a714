// Clocks and facts about the process.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform/clock.h"
#include "platform/system.h"
#include "platform/thread.h"
#include "platform/wow64.h"

using namespace tollan::platform;

TEST(Clock, CounterAndTickAdvanceTogether)
{
    int64_t frequency = 0, before = 0, after = 0;
    ASSERT_TRUE(performanceFrequency(&frequency));
    ASSERT_GT(frequency, 0);
    ASSERT_TRUE(performanceCounter(&before));
    const uint32_t tickBefore = tickCountMs();
    sleepMs(50);
    ASSERT_TRUE(performanceCounter(&after));
    const uint32_t ticks = tickCountMs() - tickBefore;
    const int64_t counted = (after - before) * 1000 / frequency;
    EXPECT_GE(counted, 49);
    EXPECT_LT(counted, 2000);
    // GetTickCount moves in steps of up to 16 ms: 50 ms can read as 34.
    EXPECT_GE(ticks, 34u);
    EXPECT_LT(ticks, 2000u);
}

TEST(Clock, LocalTimeFieldsAreInRange)
{
    LocalTime now{};
    ASSERT_TRUE(localTime(&now));
    EXPECT_GE(now.year, 2020);
    EXPECT_TRUE(now.month >= 1 && now.month <= 12);
    EXPECT_TRUE(now.day >= 1 && now.day <= 31);
    EXPECT_TRUE(now.hour >= 0 && now.hour <= 23);
    EXPECT_TRUE(now.milliseconds >= 0 && now.milliseconds <= 999);
}

TEST(System, ProcessFacts)
{
    uint32_t major = 0, minor = 0;
    ASSERT_TRUE(osVersion(&major, &minor));
    EXPECT_GT(major, 0u);
    EXPECT_NE(mainProgramHandle(), nullptr);
    EXPECT_EQ(startupShowWindowCode(), 10);
    // Looked up in kernel32 at run time; a 64-bit program is never WOW64.
    EXPECT_FALSE(isWow64Process());

    char name[260];
    const size_t length = mainProgramFileName(name, sizeof name);
    ASSERT_GT(length, 0u);
    EXPECT_EQ(std::strlen(name), length);
    EXPECT_NE(std::string(name).find("test_platform"), std::string::npos);
    char tiny[5];
    EXPECT_EQ(mainProgramFileName(tiny, sizeof tiny), 4u) << "cut short, still terminated";
}

TEST(System, WindowMessagesAreStablePerName)
{
    const uint32_t first = registerWindowMessage("Tollan test message A");
    const uint32_t second = registerWindowMessage("Tollan test message B");
    EXPECT_GE(first, 0xC000u);
    EXPECT_GE(second, 0xC000u);
    EXPECT_NE(first, second);
    EXPECT_EQ(registerWindowMessage("TOLLAN TEST MESSAGE A"), first);
    EXPECT_EQ(registerWindowMessage(""), 0u);
}

TEST(System, ErrorTextsAreReadable)
{
    char text[256] = "";
    systemErrorText(2, text, sizeof text);
    EXPECT_GT(std::strlen(text), 3u);
    char small[8];
    systemErrorText(2, small, sizeof small);
    EXPECT_LT(std::strlen(small), sizeof small);
}
