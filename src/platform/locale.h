// The user's locale as the C library's time, code-page and locale functions
// need it at start-up: the process code page, the time and date formats and
// the time zone. Windows reads GetACP/GetCPInfo, the user's locale
// (GetLocaleInfoA) and GetTimeZoneInformation; POSIX reads the locale that
// the environment names (LC_ALL, LC_CTYPE, LC_TIME, LANG) without changing
// the program's own, and the TZ rules through tzset.
#pragma once

#include <cstdint>

namespace tollan::platform {

struct CodePage {
    // The Windows number of the code page: 1252, 932, 65001 (UTF-8), ...;
    // 20127 for plain ASCII.
    uint32_t number;
    // Bytes that start a two-byte character, as up to five ranges of
    // [first, last] pairs ended by a zero pair. A single-byte code page (and
    // UTF-8, whose sequences are not made of lead and trail bytes) has none.
    uint8_t leadByteRanges[12];
};
bool processCodePage(CodePage *out) noexcept;

// How the user writes times and dates.
struct TimeFormat {
    bool twentyFourHour;
    bool leadingZeroHour;  // "09:05" rather than "9:05"
    char separator;        // between hours, minutes and seconds
};
enum class DateOrder : uint8_t { monthDayYear, dayMonthYear, yearMonthDay };
struct DateFormat {
    DateOrder order;
    bool fourDigitYear;
    char separator;
};
bool userTimeFormat(TimeFormat *out) noexcept;
bool userDateFormat(DateFormat *out) noexcept;

// The time zone: biases in minutes as Windows counts them (UTC = local time
// + bias), names as the system gives them.
struct TimeZone {
    int32_t biasMinutes;
    int32_t daylightBiasMinutes;  // added to biasMinutes while daylight time is in force
    bool hasDaylightTime;
    char standardName[64];
    char daylightName[64];
};
bool timeZone(TimeZone *out) noexcept;

}  // namespace tollan::platform
