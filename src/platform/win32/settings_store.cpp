// The settings store is the registry, through advapi32. Results are the
// registry calls' own codes.
#include "platform/settings_store.h"

#include <windows.h>

#include <cstring>
#include <new>

namespace tollan::platform {

struct SettingsKey {
    HKEY handle;
};

namespace {

HKEY rootHandle(RootKey root) noexcept
{
    switch (root) {
        case RootKey::classesRoot:
            return HKEY_CLASSES_ROOT;
        case RootKey::localMachine:
            return HKEY_LOCAL_MACHINE;
        case RootKey::currentUser:
            return HKEY_CURRENT_USER;
        case RootKey::users:
            return HKEY_USERS;
    }
    return nullptr;
}

int32_t setValue(SettingsKey *key, const char *name, DWORD type, const void *data, DWORD size) noexcept
{
    if (!key) return ERROR_INVALID_HANDLE;
    return RegSetValueExA(key->handle, name, 0, type, static_cast<const BYTE *>(data), size);
}

}  // namespace

int32_t settingsOpenKey(RootKey root, const char *path, bool write, bool view64, SettingsKey **key) noexcept
{
    if (!key) return ERROR_INVALID_PARAMETER;
    *key = nullptr;
    HKEY rootKey = rootHandle(root);
    if (!rootKey) return ERROR_INVALID_HANDLE;
    const REGSAM view = view64 ? KEY_WOW64_64KEY : 0;
    HKEY handle = nullptr;
    const LONG error = write ? RegCreateKeyExA(rootKey, path, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                               KEY_WRITE | view, nullptr, &handle, nullptr)
                             : RegOpenKeyExA(rootKey, path, 0, KEY_READ | view, &handle);
    if (error != ERROR_SUCCESS) return error;
    *key = new (std::nothrow) SettingsKey{handle};
    if (!*key) {
        RegCloseKey(handle);
        return ERROR_OUTOFMEMORY;
    }
    return ERROR_SUCCESS;
}

void settingsCloseKey(SettingsKey *key) noexcept
{
    if (!key) return;
    RegCloseKey(key->handle);
    delete key;
}

int32_t settingsQueryValue(SettingsKey *key, const char *name, uint32_t *type, void *data,
                           uint32_t *size) noexcept
{
    if (!key) return ERROR_INVALID_HANDLE;
    DWORD storedType = 0;
    DWORD storedSize = size ? *size : 0;
    const LONG error = RegQueryValueExA(key->handle, name, nullptr, &storedType, static_cast<BYTE *>(data),
                                        size ? &storedSize : nullptr);
    if (error == ERROR_SUCCESS || error == ERROR_MORE_DATA) {
        if (type) *type = storedType;
        if (size) *size = storedSize;
    }
    return error;
}

int32_t settingsSetString(SettingsKey *key, const char *name, const char *value) noexcept
{
    if (!value) return ERROR_INVALID_PARAMETER;
    return setValue(key, name, REG_SZ, value, static_cast<DWORD>(std::strlen(value) + 1));
}

int32_t settingsSetDword(SettingsKey *key, const char *name, uint32_t value) noexcept
{
    const DWORD number = value;
    return setValue(key, name, REG_DWORD, &number, sizeof number);
}

}  // namespace tollan::platform
