#include "logger/time_stamp.h"

#include "platform/wall_clock.h"

namespace tollan::logger {

namespace {

void putTwoDigits(char *at, int value) noexcept
{
    at[0] = static_cast<char>('0' + value / 10 % 10);
    at[1] = static_cast<char>('0' + value % 10);
}

}  // namespace

void TimeStamp::append(LineBuffer &out) noexcept
{
    int64_t now = platform::wallClockMilliseconds();
    int64_t second = now / 1000 - (now % 1000 < 0 ? 1 : 0);
    if (second != second_) {
        platform::LocalTime local;
        if (!platform::localTimeAt(now, &local)) {
            second_ = kNoSecond;
            return;
        }
        putTwoDigits(clock_, local.hour);
        clock_[2] = ':';
        putTwoDigits(clock_ + 3, local.minute);
        clock_[5] = ':';
        putTwoDigits(clock_ + 6, local.second);
        clock_[8] = '.';
        second_ = second;
    }
    out.append(clock_, sizeof clock_);
    out.appendZeroPadded(static_cast<uint32_t>(now - second * 1000), 3);
}

}  // namespace tollan::logger
