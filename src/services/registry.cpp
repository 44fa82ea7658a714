#include "services/registry.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "logger/log.h"
#include "services/messages.h"

namespace tollan::services {

namespace {

constexpr const char *kModule = "Mgsource/Registry";
constexpr const char *kSettingsRootParts[] = {"Software", "Vantrel", "ZOR", "17.0"};
constexpr const char *kLoggerSection = "Logger";

void warnFailure(const char *function, int32_t status) noexcept
{
    // The logger reads its own settings through here: logging those failures
    // would recurse into a logger that is not configured yet.
    if (logger::configuring()) return;
    TOLLAN_LOG(ZOR_LOG_WARNING, kModule, function, "%s", libraryMessage(status));
}

int32_t openKey(const char *function, uint32_t keyEnum, RegKeyRecord *record, const char *keyPath,
                int32_t mode, bool view64) noexcept
{
    if (!record) return kRegUnavailable;
    bool write = mode == kRegModeWrite;
    uint32_t access = (write ? kRegAccessWrite : kRegAccessRead) | (view64 ? kRegAccessWow64Key : 0);
    *record = {nullptr, nullptr, access, -1};
    if (!((keyEnum > 0) && (keyEnum < kRegNumRootKeys)))
        TOLLAN_ASSERT_FAILED("(keyEnum > 0) && (keyEnum < kRegNumRootKeys)", kModule, function);
    // Number 0 still opens below HKEY_CLASSES_ROOT; past the table there is
    // no root key to open at all.
    if (keyEnum >= kRegNumRootKeys) return kRegUnavailable;
    int32_t error = platform::settingsOpenKey(static_cast<platform::RootKey>(keyEnum), keyPath, write, view64,
                                              &record->key);
    if (error != 0) {
        record->key = nullptr;
        return kRegUnavailable;
    }
    return kRegSuccess;
}

// Reads one value of `expectedType` into data (size bytes), with the
// open / query / warn / close steps shared by every reader.
int32_t readValue(const char *function, bool view64, uint32_t rootKey, const char *keyPath,
                  const char *valueName, uint32_t expectedType, void *data, uint32_t size) noexcept
{
    RegKeyRecord record;
    int32_t status = view64 ? WinKeyHandle64(rootKey, &record, keyPath, kRegModeRead)
                            : WinKeyHandle(rootKey, &record, keyPath, kRegModeRead);
    if (status == kRegSuccess) {
        platform::SettingsKey *key = usableKey(record);
        uint32_t type = 0;
        uint32_t stored = size;
        if (!key)
            status = kRegNoKeyHandle;
        else if (platform::settingsQueryValue(key, valueName, &type, data, &stored) != 0 ||
                 type != expectedType)
            status = kRegUnavailable;
        else if (expectedType == platform::kSettingString) {
            // The registry may hold a string without its terminator.
            char *text = static_cast<char *>(data);
            if (stored == 0 || text[stored - 1] != '\0') text[stored < size ? stored : size - 1] = '\0';
        }
    }
    if (status != kRegSuccess) warnFailure(function, status);
    closeKeyRecord(&record);
    return status;
}

int32_t readString(const char *function, bool view64, uint32_t rootKey, const char *keyPath,
                   const char *valueName, char *buffer) noexcept
{
    if (!buffer) return kRegUnavailable;
    return readValue(function, view64, rootKey, keyPath, valueName, platform::kSettingString, buffer,
                     static_cast<uint32_t>(kRegStringBufferSize));
}

int32_t readLoggerString(const char *valueName, char *buffer) noexcept
{
    char path[kRegPathBufferSize];
    if (!settingsPath(kLoggerSection, path, sizeof path)) return kRegUnavailable;
    return RegGetStringValue(kRegRootCurrentUser, path, valueName, buffer);
}

int32_t readLoggerDword(const char *valueName, uint32_t *value) noexcept
{
    char path[kRegPathBufferSize];
    if (!settingsPath(kLoggerSection, path, sizeof path)) return kRegUnavailable;
    return RegGetDwordValue(kRegRootCurrentUser, path, valueName, value);
}

struct RemoteDebuggerLocation {
    char address[kRegStringBufferSize];
    uint16_t port;
    int32_t status;
};

RemoteDebuggerLocation readCachedLocation() noexcept
{
    RemoteDebuggerLocation location{};
    char path[kRegPathBufferSize];
    if (!settingsPath(nullptr, path, sizeof path)) {
        location.status = kRegUnavailable;
        return location;
    }
    // Counted as configuration, so that a machine without a remote debugger
    // does not log a warning for each missing value.
    logger::beginConfiguring();
    location.status = readRemoteDebuggerLocation(path, location.address, &location.port);
    logger::endConfiguring();
    return location;
}

}  // namespace

int32_t WinKeyHandle(uint32_t keyEnum, RegKeyRecord *record, const char *keyPath, int32_t mode) noexcept
{
    return openKey("WinKeyHandle", keyEnum, record, keyPath, mode, false);
}

int32_t WinKeyHandle64(uint32_t keyEnum, RegKeyRecord *record, const char *keyPath, int32_t mode) noexcept
{
    return openKey("WinKeyHandle64", keyEnum, record, keyPath, mode, true);
}

platform::SettingsKey *usableKey(const RegKeyRecord &record) noexcept
{
    return record.alternative ? record.alternative : record.key;
}

void closeKeyRecord(RegKeyRecord *record) noexcept
{
    if (record->alternative) platform::settingsCloseKey(record->alternative);
    if (record->key) platform::settingsCloseKey(record->key);
    record->alternative = nullptr;
    record->key = nullptr;
}

int32_t RegGetStringValue(uint32_t rootKey, const char *keyPath, const char *valueName, char *buffer) noexcept
{
    return readString("RegGetStringValue", false, rootKey, keyPath, valueName, buffer);
}

int32_t Reg64GetStringValue(uint32_t rootKey, const char *keyPath, const char *valueName,
                            char *buffer) noexcept
{
    return readString("Reg64GetStringValue", true, rootKey, keyPath, valueName, buffer);
}

int32_t RegGetDwordValue(uint32_t rootKey, const char *keyPath, const char *valueName,
                         uint32_t *value) noexcept
{
    if (!value) return kRegUnavailable;
    return readValue("RegGetDwordValue", false, rootKey, keyPath, valueName, platform::kSettingDword, value,
                     sizeof *value);
}

int32_t RegSetStringValue(uint32_t rootKey, const char *keyPath, const char *valueName,
                          const char *value) noexcept
{
    RegKeyRecord record;
    int32_t status = WinKeyHandle(rootKey, &record, keyPath, kRegModeWrite);
    if (status == kRegSuccess) {
        platform::SettingsKey *key = usableKey(record);
        if (!key)
            status = kRegNoKeyHandle;
        else if (!value || platform::settingsSetString(key, valueName, value) != 0)
            status = kRegUnavailable;
    }
    if (status != kRegSuccess) warnFailure("RegSetStringValue", status);
    closeKeyRecord(&record);
    return status;
}

bool settingsPath(const char *section, char *buffer, size_t size) noexcept
{
    if (!buffer || size == 0) return false;
    size_t used = 0;
    auto join = [&](const char *part) {
        size_t length = std::strlen(part);
        size_t needed = (used ? 1 : 0) + length;
        if (used + needed >= size) return false;
        if (used) buffer[used++] = '\\';
        std::memcpy(buffer + used, part, length);
        used += length;
        return true;
    };
    for (const char *part : kSettingsRootParts)
        if (!join(part)) return false;
    if (section && !join(section)) return false;
    buffer[used] = '\0';
    return true;
}

int32_t openSettingsRoot(uint32_t rootKey, RegKeyRecord **record, int32_t mode) noexcept
{
    if (!record) return kRegUnavailable;
    *record = new (std::nothrow) RegKeyRecord;
    if (!*record) return kRegNoMemory;
    char path[kRegPathBufferSize];
    int32_t status = settingsPath(nullptr, path, sizeof path) ? WinKeyHandle(rootKey, *record, path, mode)
                                                              : kRegUnavailable;
    if (status != kRegSuccess) {
        freeSettingsRoot(*record);
        *record = nullptr;
    }
    return status;
}

void freeSettingsRoot(RegKeyRecord *record) noexcept
{
    if (!record) return;
    closeKeyRecord(record);
    delete record;
}

int32_t RegGetLogLevel(uint32_t *mask) noexcept
{
    return readLoggerDword("Log Level", mask);
}

int32_t RegGetLogOutputLocation(uint32_t *location) noexcept
{
    return readLoggerDword("Log Output Location", location);
}

int32_t RegGetLogFileName(char *buffer) noexcept
{
    return readLoggerString("Log File Name", buffer);
}

int32_t RegGetLogFileFormat(uint32_t *format) noexcept
{
    return readLoggerDword("Log File Format", format);
}

int32_t RegGetLogFormat(char *buffer) noexcept
{
    return readLoggerString("Log Format", buffer);
}

int32_t readRemoteDebuggerLocation(const char *keyPath, char *address, uint16_t *port) noexcept
{
    char portText[kRegStringBufferSize];
    int32_t status = RegGetStringValue(kRegRootCurrentUser, keyPath, "RemoteDebuggerAddress", address);
    if (status == kRegSuccess)
        status = RegGetStringValue(kRegRootCurrentUser, keyPath, "RemoteDebuggerPort", portText);
    if (status == kRegSuccess) {
        *port = static_cast<uint16_t>(std::atoi(portText));
    } else {
        address[0] = '\0';
        *port = 0;
    }
    return status;
}

int32_t GetRemoteDebuggerLocation(char *address, uint16_t *port) noexcept
{
    // The first caller fills the cache (a thread-safe static) and gets the
    // status of the reads; everyone after it gets the cached values and 0.
    bool firstCall = false;
    static const RemoteDebuggerLocation cached = [&firstCall] {
        firstCall = true;
        return readCachedLocation();
    }();
    if (address) std::memcpy(address, cached.address, sizeof cached.address);
    if (port) *port = cached.port;
    return firstCall ? cached.status : kRegSuccess;
}

}  // namespace tollan::services
