// The wall clock behind "[TIME]".
#include <gtest/gtest.h>

#include "platform/wall_clock.h"

using tollan::platform::LocalTime;

TEST(WallClock, LocalTimeAtAgreesWithTheLocalTimeNowAndKeepsTheMilliseconds)
{
    LocalTime direct{};
    LocalTime converted{};
    for (int attempt = 0; attempt < 3; ++attempt) {  // again when a minute turns in between
        int64_t now = tollan::platform::wallClockMilliseconds();
        ASSERT_TRUE(tollan::platform::localTime(&direct));
        ASSERT_TRUE(tollan::platform::localTimeAt(now, &converted));
        if (direct.minute == converted.minute) break;
    }
    EXPECT_EQ(converted.day, direct.day);
    EXPECT_EQ(converted.hour, direct.hour);
    EXPECT_EQ(converted.minute, direct.minute);
    ASSERT_TRUE(tollan::platform::localTimeAt(1700000000999, &converted));
    EXPECT_EQ(converted.milliseconds, 999);
}
