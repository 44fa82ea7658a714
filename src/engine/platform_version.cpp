#include "engine/platform_version.h"

#include "engine/engine_state.h"
#include "platform/system.h"

namespace tollan::engine {

bool SetCurrentPlatform() noexcept
{
    uint32_t major = 0;
    uint32_t minor = 0;
    if (!platform::osVersion(&major, &minor)) return false;
    state.osMajorVersion = major;
    state.osMinorVersion = minor;
    state.platformDetected = true;
    return true;
}

}  // namespace tollan::engine
