// The environment's locale, read without touching the program's own: the
// locale objects are made with newlocale from what LC_ALL, LC_CTYPE, LC_TIME
// and LANG name, and asked with nl_langinfo_l.
#include "platform/locale.h"

#include <langinfo.h>
#include <locale.h>
#include <strings.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tollan::platform {
namespace {

// The environment's locale for one category, or the C locale when the
// environment names one that is not installed.
class EnvironmentLocale {
public:
    explicit EnvironmentLocale(int categoryMask) noexcept
        : locale_(newlocale(categoryMask, "", static_cast<locale_t>(nullptr)))
    {
        if (locale_ == static_cast<locale_t>(nullptr))
            locale_ = newlocale(categoryMask, "C", static_cast<locale_t>(nullptr));
    }
    ~EnvironmentLocale()
    {
        if (locale_ != static_cast<locale_t>(nullptr)) freelocale(locale_);
    }
    EnvironmentLocale(const EnvironmentLocale &) = delete;
    EnvironmentLocale &operator=(const EnvironmentLocale &) = delete;

    // nl_langinfo_l's answer; null without a locale.
    const char *info(nl_item item) const noexcept
    {
        return locale_ != static_cast<locale_t>(nullptr) ? nl_langinfo_l(item, locale_) : nullptr;
    }

private:
    locale_t locale_;
};

struct CodeSet {
    const char *name;
    uint32_t number;
    uint8_t leadByteRanges[12];
};

// Code sets by the names glibc gives them, with the Windows code page that
// holds the same characters.
constexpr CodeSet kCodeSets[] = {
    {"UTF-8", 65001, {}},
    {"ANSI_X3.4-1968", 20127, {}},
    {"ASCII", 20127, {}},
    {"CP1250", 1250, {}},
    {"CP1251", 1251, {}},
    {"CP1252", 1252, {}},
    {"CP1253", 1253, {}},
    {"CP1254", 1254, {}},
    {"CP1255", 1255, {}},
    {"CP1256", 1256, {}},
    {"CP1257", 1257, {}},
    {"KOI8-R", 20866, {}},
    {"KOI8-U", 21866, {}},
    {"GB18030", 54936, {}},
    {"SHIFT_JIS", 932, {0x81, 0x9F, 0xE0, 0xFC}},
    {"SJIS", 932, {0x81, 0x9F, 0xE0, 0xFC}},
    {"CP932", 932, {0x81, 0x9F, 0xE0, 0xFC}},
    {"GBK", 936, {0x81, 0xFE}},
    {"GB2312", 936, {0x81, 0xFE}},
    {"EUC-KR", 51949, {0xA1, 0xFE}},
    {"CP949", 949, {0x81, 0xFE}},
    {"BIG5", 950, {0x81, 0xFE}},
    {"BIG5-HKSCS", 950, {0x81, 0xFE}},
    {"EUC-JP", 51932, {0x8E, 0x8E, 0xA1, 0xFE}},
};

// Windows numbers the ISO 8859 parts from 28591.
constexpr const char kIsoPrefix[] = "ISO-8859-";

// Expands the strftime shorthands that name whole clock or calendar formats.
const char *expandShorthand(char conversion) noexcept
{
    switch (conversion) {
        case 'T':
            return "%H:%M:%S";
        case 'r':
            return "%I:%M:%S %p";
        case 'R':
            return "%H:%M";
        case 'D':
            return "%m/%d/%y";
        case 'F':
            return "%Y-%m-%d";
        default:
            return nullptr;
    }
}

// The format with its shorthands spelled out, into buffer.
void expandFormat(const char *format, char *buffer, size_t size) noexcept
{
    size_t used = 0;
    for (const char *at = format; *at != '\0' && used + 1 < size; ++at) {
        const char *expansion = at[0] == '%' ? expandShorthand(at[1]) : nullptr;
        if (expansion == nullptr) {
            buffer[used++] = *at;
            continue;
        }
        used += static_cast<size_t>(std::snprintf(buffer + used, size - used, "%s", expansion));
        if (used >= size) used = size - 1;
        ++at;
    }
    buffer[used] = '\0';
}

// The environment's strftime format `item` (T_FMT, D_FMT) with its
// shorthands spelled out; false when there is no locale to ask.
bool environmentTimeFormat(nl_item item, char *buffer, size_t size) noexcept
{
    EnvironmentLocale locale(LC_TIME_MASK);
    const char *format = locale.info(item);
    if (format == nullptr) return false;
    expandFormat(format, buffer, size);
    return true;
}

// The first character after position `after` that is neither a conversion
// nor a blank; `fallback` when there is none.
char separatorAfter(const char *after, char fallback) noexcept
{
    for (const char *at = after; *at != '\0'; ++at) {
        if (*at == '%') {
            if (at[1] == '\0') break;
            ++at;
            continue;
        }
        if (*at != ' ') return *at;
    }
    return fallback;
}

}  // namespace

bool processCodePage(CodePage *out) noexcept
{
    EnvironmentLocale locale(LC_CTYPE_MASK);
    const char *codeSet = locale.info(CODESET);
    if (out == nullptr || codeSet == nullptr) return false;
    *out = CodePage{};
    if (strncasecmp(codeSet, kIsoPrefix, sizeof kIsoPrefix - 1) == 0) {
        out->number = 28590 + static_cast<uint32_t>(std::atoi(codeSet + sizeof kIsoPrefix - 1));
        return true;
    }
    for (const CodeSet &known : kCodeSets) {
        if (strcasecmp(codeSet, known.name) == 0) {
            out->number = known.number;
            std::memcpy(out->leadByteRanges, known.leadByteRanges, sizeof out->leadByteRanges);
            return true;
        }
    }
    return true;  // a code set without a Windows number: 0, single-byte
}

bool userTimeFormat(TimeFormat *out) noexcept
{
    char expanded[128];
    if (out == nullptr || !environmentTimeFormat(T_FMT, expanded, sizeof expanded)) return false;
    *out = TimeFormat{true, true, ':'};
    for (const char *at = std::strchr(expanded, '%'); at != nullptr; at = std::strchr(at + 1, '%')) {
        const char conversion = at[1];
        if (conversion == 'H' || conversion == 'k' || conversion == 'I' || conversion == 'l') {
            out->twentyFourHour = conversion == 'H' || conversion == 'k';
            out->leadingZeroHour = conversion == 'H' || conversion == 'I';
            out->separator = separatorAfter(at + 2, ':');
            break;
        }
        if (conversion == '\0') break;
    }
    return true;
}

bool userDateFormat(DateFormat *out) noexcept
{
    char expanded[128];
    if (out == nullptr || !environmentTimeFormat(D_FMT, expanded, sizeof expanded)) return false;
    const char *day = nullptr;
    const char *month = nullptr;
    const char *year = nullptr;
    for (const char *at = std::strchr(expanded, '%'); at != nullptr && at[1] != '\0';
         at = std::strchr(at + 2, '%')) {
        switch (at[1]) {
            case 'd':
            case 'e':
                day = day ? day : at;
                break;
            case 'm':
            case 'b':
            case 'B':
                month = month ? month : at;
                break;
            case 'y':
            case 'Y':
                year = year ? year : at;
                break;
            default:
                break;
        }
    }
    *out = DateFormat{DateOrder::monthDayYear, false, '/'};
    if (day == nullptr || month == nullptr || year == nullptr) return true;  // no numeric date: the C form
    if (year < month && year < day)
        out->order = DateOrder::yearMonthDay;
    else if (day < month)
        out->order = DateOrder::dayMonthYear;
    out->fourDigitYear = year[1] == 'Y';
    const char *first = std::min({day, month, year});
    out->separator = separatorAfter(first + 2, '/');
    return true;
}

bool timeZone(TimeZone *out) noexcept
{
    if (out == nullptr) return false;
    tzset();
    *out = TimeZone{};
    // The offsets in force in January and in July: whichever differs from the
    // standard one is daylight time, in either hemisphere.
    const time_t now = time(nullptr);
    tm today{};
    if (localtime_r(&now, &today) == nullptr) return false;
    long standardOffset = 0;
    long daylightOffset = 0;
    bool standardSeen = false;
    bool daylightSeen = false;
    for (int month : {0, 6}) {
        tm probe{};
        probe.tm_year = today.tm_year;
        probe.tm_mon = month;
        probe.tm_mday = 15;
        probe.tm_hour = 12;
        probe.tm_isdst = -1;
        const time_t at = mktime(&probe);
        if (at == static_cast<time_t>(-1) || localtime_r(&at, &probe) == nullptr) return false;
        if (probe.tm_isdst > 0) {
            daylightOffset = probe.tm_gmtoff;
            daylightSeen = true;
            std::snprintf(out->daylightName, sizeof out->daylightName, "%s",
                          probe.tm_zone ? probe.tm_zone : "");
        } else {
            standardOffset = probe.tm_gmtoff;
            standardSeen = true;
            std::snprintf(out->standardName, sizeof out->standardName, "%s",
                          probe.tm_zone ? probe.tm_zone : "");
        }
    }
    if (!standardSeen) standardOffset = daylightOffset;  // a zone in daylight time all year
    out->biasMinutes = static_cast<int32_t>(-standardOffset / 60);
    out->hasDaylightTime = daylightSeen && standardSeen;
    out->daylightBiasMinutes =
        out->hasDaylightTime ? static_cast<int32_t>(-(daylightOffset - standardOffset) / 60) : 0;
    return true;
}

}  // namespace tollan::platform
