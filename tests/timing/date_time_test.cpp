#include <gtest/gtest.h>

#include <tollan/utility.h>

#include <cstdio>
#include <regex>
#include <string>
#include <thread>

#include "platform/clock.h"
#include "timing/library.h"

using tollan::platform::LocalTime;

namespace {

LocalTime now()
{
    LocalTime time{};
    EXPECT_TRUE(tollan::platform::localTime(&time));
    return time;
}

std::string expectedDate(const LocalTime &time)
{
    char text[32];
    std::snprintf(text, sizeof text, "%02d-%02d-%04d", time.month, time.day, time.year);
    return text;
}

}  // namespace

TEST(DateStr, IsMonthDayYearAndTimeStrHoursMinutesSeconds)
{
    const LocalTime before = now();
    const std::string date = DateStr();
    const LocalTime after = now();
    EXPECT_TRUE(date == expectedDate(before) || date == expectedDate(after)) << date;
    const std::string time = TimeStr();
    EXPECT_TRUE(std::regex_match(time, std::regex("([01][0-9]|2[0-3]):[0-5][0-9]:[0-5][0-9]"))) << time;
}

TEST(DateStr, EachThreadHasItsOwnBuffer)
{
    char *date = DateStr();
    char *time = TimeStr();
    EXPECT_EQ(time, date + 11);  // one block: the date at its start, the time 11 bytes on
    EXPECT_EQ(DateStr(), date);  // the same buffer on each call

    char *otherDate = nullptr;
    std::string otherText;
    std::thread other([&] {
        otherDate = DateStr();
        otherText = otherDate;
        tollan::timing::UtilityLibraryThreadCleanup();
    });
    other.join();
    EXPECT_NE(otherDate, date);
    EXPECT_EQ(otherText.size(), 10u);
    EXPECT_EQ(std::string(date).size(), 10u);  // untouched by the other thread
}
