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

platform::SettingsKey *openSettingsRoot(bool write) noexcept
{
    char path[kRegPathBufferSize];
    if (!settingsPath(nullptr, path, sizeof path)) return nullptr;
    platform::SettingsKey *key = nullptr;
    if (platform::settingsOpenKey(platform::RootKey::currentUser, path, write, false, &key) != 0)
        return nullptr;
    return key;
}

// Reads the value `name` of `expectedType` into data (*size bytes; becomes
// the stored size). False when it is absent (quietly) or unusable (logged).
bool readValue(const char *function, const char *name, uint32_t expectedType, void *data,
               uint32_t *size) noexcept
{
    if (name == nullptr) return false;
    platform::SettingsKey *key = openSettingsRoot(false);
    if (key == nullptr) return false;
    const uint32_t room = *size;
    uint32_t type = 0;
    const int32_t error = platform::settingsQueryValue(key, name, &type, data, size);
    platform::settingsCloseKey(key);
    if (error == kNotStored) return false;
    if (error != 0 || type != expectedType || *size > room) {
        if (!logger::configuring())
            TOLLAN_LOG(ZOR_LOG_WARNING, kModule, function, "%s: %s", name, libraryMessage(kRegUnavailable));
        return false;
    }
    return true;
}

}  // namespace

bool configurationSwitch(const char *name) noexcept
{
    uint32_t value = 0;
    uint32_t size = sizeof value;
    return readValue("configurationSwitch", name, platform::kSettingDword, &value, &size) &&
           size == sizeof value && value != 0;
}

bool configurationText(const char *name, char *buffer, size_t size) noexcept
{
    if (buffer == nullptr || size == 0 || size > UINT32_MAX) return false;
    auto stored = static_cast<uint32_t>(size);
    if (!readValue("configurationText", name, platform::kSettingString, buffer, &stored)) return false;
    // A text stored without its terminator still ends inside the buffer.
    if (stored == 0 || buffer[stored - 1] != '\0') {
        if (stored >= size) return false;
        buffer[stored] = '\0';
    }
    return true;
}

bool storeConfigurationText(const char *name, const char *value) noexcept
{
    if (name == nullptr || value == nullptr) return false;
    platform::SettingsKey *key = openSettingsRoot(true);
    if (key == nullptr) return false;
    const bool stored = platform::settingsSetString(key, name, value) == 0;
    platform::settingsCloseKey(key);
    return stored;
}

}  // namespace tollan::services
