#include "engine/platform_version.h"

#include "platform/system.h"
#include "services/lifecycle.h"

namespace tollan::engine {

bool SetCurrentPlatform() noexcept
{
    uint32_t major = 0;
    uint32_t minor = 0;
    if (!platform::osVersion(&major, &minor)) return false;
    services::lifecycle().osMajorVersion = major;
    services::lifecycle().osMinorVersion = minor;
    services::lifecycle().platformDetected = true;
    return true;
}

}  // namespace tollan::engine
