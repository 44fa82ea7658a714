// The wall clock behind "[TIME]".
#include <gtest/gtest.h>

#include "platform/wall_clock.h"

using tollan::platform::LocalTime;

TEST(WallClock, LocalTimeAtAgreesWithTheLocalTimeNow)
{
    LocalTime direct{};
    LocalTime converted{};
    // Retried when a minute turns between the two readings.
    for (int attempt = 0; attempt < 3; ++attempt) {
        int64_t now = tollan::platform::wallClockMilliseconds();
        ASSERT_TRUE(tollan::platform::localTime(&direct));
        ASSERT_TRUE(tollan::platform::localTimeAt(now, &converted));
        if (direct.minute == converted.minute) break;
    }
    EXPECT_EQ(converted.year, direct.year);
    EXPECT_EQ(converted.day, direct.day);
    EXPECT_EQ(converted.hour, direct.hour);
    EXPECT_EQ(converted.minute, direct.minute);
}

TEST(WallClock, MillisecondsAreTheRemainderOfTheSecond)
{
    LocalTime time{};
    ASSERT_TRUE(tollan::platform::localTimeAt(1700000000123, &time));
    EXPECT_EQ(time.milliseconds, 123);
    EXPECT_EQ(time.year, 2023);
    ASSERT_TRUE(tollan::platform::localTimeAt(1700000000999, &time));
    EXPECT_EQ(time.milliseconds, 999);
}
