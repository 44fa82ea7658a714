#include "settings_writer.h"

#include "platform/settings_store.h"

namespace tollan::testing {

namespace {

template <typename Write>
int32_t store(uint32_t root, const char *keyPath, Write write)
{
    platform::SettingsKey *key = nullptr;
    int32_t error =
        platform::settingsOpenKey(static_cast<platform::RootKey>(root), keyPath, true, false, &key);
    if (error != 0) return error;
    error = write(key);
    platform::settingsCloseKey(key);
    return error;
}

}  // namespace

int32_t storeString(const char *keyPath, const char *name, const char *value, uint32_t root)
{
    return store(root, keyPath,
                 [&](platform::SettingsKey *key) { return platform::settingsSetString(key, name, value); });
}

int32_t storeDword(const char *keyPath, const char *name, uint32_t value, uint32_t root)
{
    return store(root, keyPath,
                 [&](platform::SettingsKey *key) { return platform::settingsSetDword(key, name, value); });
}

}  // namespace tollan::testing
