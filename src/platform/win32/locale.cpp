// The process code page, the user's time and date pictures and the time
// zone, from kernel32.
#include "platform/locale.h"

#include <windows.h>

#include <cstdio>
#include <cstring>

namespace tollan::platform {
namespace {

// The first character after `from` that is not one of `letters`; fallback
// when the picture ends first.
char separatorAfter(const char *from, const char *letters, char fallback) noexcept
{
    for (const char *at = from; *at != '\0'; ++at)
        if (std::strchr(letters, *at) == nullptr && *at != ' ' && *at != '\'') return *at;
    return fallback;
}

void narrowName(const WCHAR *wide, char *buffer, size_t size) noexcept
{
    if (WideCharToMultiByte(CP_ACP, 0, wide, -1, buffer, static_cast<int>(size), nullptr, nullptr) == 0)
        buffer[0] = '\0';
}

}  // namespace

bool processCodePage(CodePage *out) noexcept
{
    if (out == nullptr) return false;
    *out = CodePage{};
    out->number = GetACP();
    CPINFO info{};
    if (!GetCPInfo(out->number, &info)) return false;
    // LeadByte holds up to five [first, last] pairs ended by a zero pair.
    for (size_t i = 0; i + 1 < sizeof out->leadByteRanges && i < MAX_LEADBYTES; i += 2) {
        if (info.LeadByte[i] == 0) break;
        out->leadByteRanges[i] = info.LeadByte[i];
        out->leadByteRanges[i + 1] = info.LeadByte[i + 1];
    }
    return true;
}

bool userTimeFormat(TimeFormat *out) noexcept
{
    char picture[80];
    if (out == nullptr ||
        GetLocaleInfoA(LOCALE_USER_DEFAULT, LOCALE_STIMEFORMAT, picture, sizeof picture) == 0)
        return false;
    *out = TimeFormat{true, true, ':'};
    // "HH:mm:ss" or "h:mm:ss tt": H is the 24-hour clock, a doubled letter a
    // leading zero.
    if (const char *hour = std::strpbrk(picture, "Hh")) {
        out->twentyFourHour = *hour == 'H';
        out->leadingZeroHour = hour[1] == *hour;
        out->separator = separatorAfter(hour, "Hh", ':');
    }
    return true;
}

bool userDateFormat(DateFormat *out) noexcept
{
    char picture[80];
    if (out == nullptr ||
        GetLocaleInfoA(LOCALE_USER_DEFAULT, LOCALE_SSHORTDATE, picture, sizeof picture) == 0)
        return false;
    *out = DateFormat{DateOrder::monthDayYear, false, '/'};
    const char *day = std::strchr(picture, 'd');
    const char *month = std::strchr(picture, 'M');
    const char *year = std::strchr(picture, 'y');
    if (day == nullptr || month == nullptr || year == nullptr) return true;
    if (year < month && year < day)
        out->order = DateOrder::yearMonthDay;
    else if (day < month)
        out->order = DateOrder::dayMonthYear;
    out->fourDigitYear = std::strstr(picture, "yyyy") != nullptr;
    const char *first = day < month ? (day < year ? day : year) : (month < year ? month : year);
    out->separator = separatorAfter(first, "dMy", '/');
    return true;
}

bool timeZone(TimeZone *out) noexcept
{
    if (out == nullptr) return false;
    TIME_ZONE_INFORMATION info{};
    if (GetTimeZoneInformation(&info) == TIME_ZONE_ID_INVALID) return false;
    *out = TimeZone{};
    out->biasMinutes = info.Bias + info.StandardBias;
    out->hasDaylightTime = info.DaylightDate.wMonth != 0;
    out->daylightBiasMinutes = out->hasDaylightTime ? info.DaylightBias - info.StandardBias : 0;
    narrowName(info.StandardName, out->standardName, sizeof out->standardName);
    narrowName(info.DaylightName, out->daylightName, sizeof out->daylightName);
    return true;
}

}  // namespace tollan::platform
