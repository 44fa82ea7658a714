// The settings store on a .reg text file. Every call reads the file afresh
// (it is small), so that values written by other processes are seen; every
// change re-reads it under a lock before rewriting it, so that none of theirs
// is lost. Key and value names match without regard to case, as in the
// registry; the 64-bit view is the only view.
#include "platform/settings_store.h"

#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "platform/posix/settings_document.h"
#include "platform/posix/settings_file.h"

namespace tollan::platform {

struct SettingsKey {
    posix::SettingsKeyPath key;
    bool writable;
};

namespace {

constexpr int32_t kErrorFileNotFound = 2;
constexpr int32_t kErrorAccessDenied = 5;
constexpr int32_t kErrorInvalidHandle = 6;
constexpr int32_t kErrorOutOfMemory = 14;
constexpr int32_t kErrorInvalidParameter = 87;
constexpr int32_t kErrorMoreData = 234;
constexpr int32_t kErrorIoFailed = 1016;

int32_t loadCurrent(posix::SettingsDocument *document)
{
    const std::string path = posix::settingsFilePath();
    if (path.empty()) return kErrorIoFailed;
    return posix::loadSettings(path, document);
}

int32_t setValue(SettingsKey *key, const char *name, uint32_t type, std::string data) noexcept
{
    if (!key) return kErrorInvalidHandle;
    if (!key->writable) return kErrorAccessDenied;
    try {
        const std::string path = posix::settingsFilePath();
        if (path.empty()) return kErrorIoFailed;
        const posix::SettingsValue value{name ? name : "", type, std::move(data)};
        return posix::updateSettings(path, [&](posix::SettingsDocument &document) {
            document.setValue(key->key, value);
            return true;
        });
    } catch (const std::bad_alloc &) {
        return kErrorOutOfMemory;
    } catch (...) {
        return kErrorIoFailed;
    }
}

}  // namespace

int32_t settingsOpenKey(RootKey root, const char *path, bool write, bool, SettingsKey **key) noexcept
{
    if (!key) return kErrorInvalidParameter;
    *key = nullptr;
    if (static_cast<uint32_t>(root) > 3) return kErrorInvalidHandle;
    try {
        auto opened = std::make_unique<SettingsKey>(
            SettingsKey{{static_cast<uint32_t>(root), posix::normaliseKeyPath(path ? path : "")}, write});
        if (write) {
            const std::string file = posix::settingsFilePath();
            if (file.empty()) return kErrorIoFailed;
            const int32_t error = posix::updateSettings(file, [&](posix::SettingsDocument &document) {
                if (opened->key.path.empty() || document.keyExists(opened->key)) return false;
                document.createKey(opened->key);
                return true;
            });
            if (error) return error;
        } else if (!opened->key.path.empty()) {
            posix::SettingsDocument document;
            if (const int32_t error = loadCurrent(&document)) return error;
            if (!document.keyExists(opened->key)) return kErrorFileNotFound;
        }
        *key = opened.release();
        return 0;
    } catch (const std::bad_alloc &) {
        return kErrorOutOfMemory;
    } catch (...) {
        return kErrorIoFailed;
    }
}

void settingsCloseKey(SettingsKey *key) noexcept
{
    delete key;
}

int32_t settingsQueryValue(SettingsKey *key, const char *name, uint32_t *type, void *data,
                           uint32_t *size) noexcept
{
    if (!key) return kErrorInvalidHandle;
    if (key->writable) return kErrorAccessDenied;  // opened for writing only
    if (data && !size) return kErrorInvalidParameter;
    try {
        posix::SettingsDocument document;
        if (const int32_t error = loadCurrent(&document)) return error;
        const posix::SettingsValue *value = document.findValue(key->key, name ? name : "");
        if (!value) return kErrorFileNotFound;
        if (type) *type = value->type;
        const auto stored = static_cast<uint32_t>(value->data.size());
        if (data && *size < stored) {
            *size = stored;
            return kErrorMoreData;
        }
        if (data) std::memcpy(data, value->data.data(), stored);
        if (size) *size = stored;
        return 0;
    } catch (const std::bad_alloc &) {
        return kErrorOutOfMemory;
    } catch (...) {
        return kErrorIoFailed;
    }
}

int32_t settingsSetString(SettingsKey *key, const char *name, const char *value) noexcept
{
    if (!value) return kErrorInvalidParameter;
    try {
        return setValue(key, name, kSettingString, std::string(value, std::strlen(value) + 1));
    } catch (...) {
        return kErrorOutOfMemory;
    }
}

int32_t settingsSetDword(SettingsKey *key, const char *name, uint32_t value) noexcept
{
    char bytes[4];
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<char>(value >> (8 * i));
    try {
        return setValue(key, name, kSettingDword, std::string(bytes, 4));
    } catch (...) {
        return kErrorOutOfMemory;
    }
}

}  // namespace tollan::platform
