#include "services/configuration.h"

#include <cstdint>

#include "logger/log.h"
#include "platform/settings_store.h"
#include "services/messages.h"
#include "services/registry.h"

namespace tollan::services {
namespace {

constexpr const char *kModule = "Mgsource/Config";
// The store's code for a key or value that does not exist (ERROR_FILE_NOT_FOUND).
constexpr int32_t kNotStored = 2;

}  // namespace

bool configurationSwitch(const char *name) noexcept
{
    char path[kRegPathBufferSize];
    if (name == nullptr || !settingsPath(nullptr, path, sizeof path)) return false;
    platform::SettingsKey *key = nullptr;
    if (platform::settingsOpenKey(platform::RootKey::currentUser, path, false, false, &key) != 0)
        return false;
    uint32_t type = 0;
    uint32_t value = 0;
    uint32_t size = sizeof value;
    const int32_t error = platform::settingsQueryValue(key, name, &type, &value, &size);
    platform::settingsCloseKey(key);
    if (error == kNotStored) return false;
    if (error != 0 || type != platform::kSettingDword || size != sizeof value) {
        if (!logger::configuring())
            TOLLAN_LOG(ZOR_LOG_WARNING, kModule, "configurationSwitch", "%s: %s", name,
                       libraryMessage(kRegUnavailable));
        return false;
    }
    return value != 0;
}

}  // namespace tollan::services
