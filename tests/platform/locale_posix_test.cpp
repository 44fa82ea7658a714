// The POSIX locale backend reads what the environment names, never the
// program's own locale.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "platform/locale.h"

namespace {

using namespace tollan::platform;

// Sets an environment variable for one test and puts the old value back.
class ScopedVariable {
public:
    ScopedVariable(const char *name, const char *value) : name_(name)
    {
        if (const char *old = std::getenv(name)) old_ = old, had_ = true;
        setenv(name, value, 1);
    }
    ~ScopedVariable()
    {
        if (had_)
            setenv(name_, old_.c_str(), 1);
        else
            unsetenv(name_);
        tzset();
    }

private:
    const char *name_;
    std::string old_;
    bool had_ = false;
};

TEST(PosixLocale, TheCodeSetGivesItsWindowsCodePage)
{
    struct Case {
        const char *locale;
        uint32_t page;
    };
    // UTF-8 has no lead bytes; a locale that is not installed is the C locale.
    for (const Case &c : {Case{"C", 20127}, Case{"C.UTF-8", 65001}, Case{"no_SUCH.locale", 20127}}) {
        SCOPED_TRACE(c.locale);
        ScopedVariable all("LC_ALL", c.locale);
        CodePage page{};
        ASSERT_TRUE(processCodePage(&page));
        EXPECT_EQ(page.number, c.page);
        EXPECT_EQ(page.leadByteRanges[0], 0);
    }
}

TEST(PosixLocale, TheCLocaleWritesTwentyFourHourTimesAndMonthFirstDates)
{
    ScopedVariable all("LC_ALL", "C");
    TimeFormat time{};
    ASSERT_TRUE(userTimeFormat(&time));
    EXPECT_TRUE(time.twentyFourHour);
    EXPECT_TRUE(time.leadingZeroHour);
    EXPECT_EQ(time.separator, ':');
    DateFormat date{};
    ASSERT_TRUE(userDateFormat(&date));
    EXPECT_EQ(date.order, DateOrder::monthDayYear);  // %m/%d/%y
    EXPECT_FALSE(date.fourDigitYear);
    EXPECT_EQ(date.separator, '/');
}

TEST(PosixLocale, TimeZoneBiasesCountAsWindowsCountsThem)
{
    TimeZone zone{};
    {
        ScopedVariable tz("TZ", "UTC0");
        ASSERT_TRUE(timeZone(&zone));
        EXPECT_EQ(zone.biasMinutes, 0);
        EXPECT_FALSE(zone.hasDaylightTime);
    }
    {
        // Central European time, from the rule alone (no zone files needed).
        ScopedVariable tz("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
        ASSERT_TRUE(timeZone(&zone));
        EXPECT_EQ(zone.biasMinutes, -60);
        EXPECT_TRUE(zone.hasDaylightTime);
        EXPECT_EQ(zone.daylightBiasMinutes, -60);
        EXPECT_STREQ(zone.standardName, "CET");
        EXPECT_STREQ(zone.daylightName, "CEST");
    }
    {
        ScopedVariable tz("TZ", "EST5EDT,M3.2.0,M11.1.0");
        ASSERT_TRUE(timeZone(&zone));
        EXPECT_EQ(zone.biasMinutes, 300);
        EXPECT_EQ(zone.daylightBiasMinutes, -60);
    }
}

}  // namespace
