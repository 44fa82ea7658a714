#include "stdc/time_zone.h"

#include "logger/log.h"

namespace tollan::stdc {
namespace {

constinit platform::TimeZone zone{0, 0, false, "UTC", "UTC"};

}  // namespace

bool InitTimeLib() noexcept
{
    platform::TimeZone read{};
    if (!platform::timeZone(&read)) {
        if (!logger::configuring())
            TOLLAN_LOG(ZOR_LOG_WARNING, "qwcompat/wmain", "WMain", "%s", kTimeLibraryFailedText);
        return false;
    }
    zone = read;
    return true;
}

platform::TimeZone timeZoneData() noexcept
{
    return zone;
}

}  // namespace tollan::stdc
