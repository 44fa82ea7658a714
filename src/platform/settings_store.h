// The settings store: the registry on Windows, a .reg text file elsewhere
// ($TOLLAN_REGISTRY, else $XDG_CONFIG_HOME/tollan/registry.reg). The calls
// follow advapi32's model; results are system error codes (0 is success).
#pragma once

#include <cstdint>

namespace tollan::platform {

enum class RootKey : uint32_t { classesRoot = 0, localMachine = 1, currentUser = 2, users = 3 };

// Value types as the registry numbers them.
inline constexpr uint32_t kSettingString = 1;  // REG_SZ
inline constexpr uint32_t kSettingDword = 4;   // REG_DWORD

struct SettingsKey;

// Opens (write: creates or opens) the key at `path` below `root`. view64
// asks for the 64-bit registry view (KEY_WOW64_64KEY).
int32_t settingsOpenKey(RootKey root, const char *path, bool write, bool view64, SettingsKey **key) noexcept;
void settingsCloseKey(SettingsKey *key) noexcept;
// RegQueryValueExA: stores the type and copies at most *size bytes of data
// (strings with their terminating zero); *size becomes the stored size.
int32_t settingsQueryValue(SettingsKey *key, const char *name, uint32_t *type, void *data,
                           uint32_t *size) noexcept;
// RegSetValueExA for a string or a 32-bit number.
int32_t settingsSetString(SettingsKey *key, const char *name, const char *value) noexcept;
int32_t settingsSetDword(SettingsKey *key, const char *name, uint32_t value) noexcept;

}  // namespace tollan::platform
