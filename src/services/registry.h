// The library's persistent settings in the registry (a settings file on
// POSIX, see platform/settings_store.h). Root keys are small numbers: 0
// HKEY_CLASSES_ROOT (refused by the range check), 1 HKEY_LOCAL_MACHINE,
// 2 HKEY_CURRENT_USER, 3 HKEY_USERS.
//
// Status codes: 0 success; 77 the key cannot be opened or the value is
// missing or of the wrong type; 78 no key handle after a successful open;
// 2 no memory for a key record. Their texts are in the library message table.
// A failed read writes a WARNING line (module "Mgsource/Registry") unless the
// logger is configuring itself or WARNING is off.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/settings_store.h"

namespace tollan::services {

inline constexpr int32_t kRegSuccess = 0;
inline constexpr int32_t kRegNoMemory = 2;
inline constexpr int32_t kRegUnavailable = 77;
inline constexpr int32_t kRegNoKeyHandle = 78;

inline constexpr uint32_t kRegNumRootKeys = 4;
inline constexpr uint32_t kRegRootCurrentUser = 2;
// Open modes: 1 creates or opens for writing, anything else opens for reading.
inline constexpr int32_t kRegModeRead = 0;
inline constexpr int32_t kRegModeWrite = 1;
// Access masks: KEY_READ, KEY_WRITE, and each with KEY_WOW64_64KEY.
inline constexpr uint32_t kRegAccessRead = 0x20019;
inline constexpr uint32_t kRegAccessWrite = 0x20006;
inline constexpr uint32_t kRegAccessWow64Key = 0x100;

// The size of every string buffer a reader fills, terminator included.
inline constexpr size_t kRegStringBufferSize = 2049;
// Large enough for the settings root path and any section name of the library.
inline constexpr size_t kRegPathBufferSize = 256;

// An open key as the open operation leaves it; the caller closes it with
// closeKeyRecord.
struct RegKeyRecord {
    platform::SettingsKey *key;
    platform::SettingsKey *alternative;  // used instead of key when non-null
    uint32_t access;
    intptr_t reserved;  // preset to -1
};

// Opens keyPath below root-key number keyEnum into *record (cleared first).
// A keyEnum outside 1 to 3 is reported through ZORAssert and the open is
// still attempted; numbers from 4 on name no root key and give 77.
int32_t WinKeyHandle(uint32_t keyEnum, RegKeyRecord *record, const char *keyPath, int32_t mode) noexcept;
// The same in the 64-bit registry view.
int32_t WinKeyHandle64(uint32_t keyEnum, RegKeyRecord *record, const char *keyPath, int32_t mode) noexcept;
// The handle to use: the alternative when set, else the key; null for none.
platform::SettingsKey *usableKey(const RegKeyRecord &record) noexcept;
// Closes both handles; the record may be reused afterwards.
void closeKeyRecord(RegKeyRecord *record) noexcept;

// Reads a plain string (REG_SZ) into buffer, which holds kRegStringBufferSize
// bytes; an empty stored value gives an empty string. On failure the buffer
// is as the query left it.
int32_t RegGetStringValue(uint32_t rootKey, const char *keyPath, const char *valueName,
                          char *buffer) noexcept;
// Reads a 32-bit number (REG_DWORD).
int32_t RegGetDwordValue(uint32_t rootKey, const char *keyPath, const char *valueName,
                         uint32_t *value) noexcept;
// RegGetStringValue through the 64-bit view.
int32_t Reg64GetStringValue(uint32_t rootKey, const char *keyPath, const char *valueName,
                            char *buffer) noexcept;
// Writes a string value, creating the key when needed.
int32_t RegSetStringValue(uint32_t rootKey, const char *keyPath, const char *valueName,
                          const char *value) noexcept;

// Joins "Software\Vantrel\ZOR\17.0" and, when section is not null, the
// section with backslashes into buffer. False when it does not fit.
bool settingsPath(const char *section, char *buffer, size_t size) noexcept;
// Allocates a key record and opens the settings root in it. On failure
// *record is null and the record freed; 2 when it cannot be allocated.
int32_t openSettingsRoot(uint32_t rootKey, RegKeyRecord **record, int32_t mode) noexcept;
// Closes and frees a record from openSettingsRoot; null is ignored.
void freeSettingsRoot(RegKeyRecord *record) noexcept;

// The logger's values, from the current user's settings root plus "Logger".
int32_t RegGetLogLevel(uint32_t *mask) noexcept;
int32_t RegGetLogOutputLocation(uint32_t *location) noexcept;
int32_t RegGetLogFileName(char *buffer) noexcept;  // kRegStringBufferSize bytes
int32_t RegGetLogFileFormat(uint32_t *format) noexcept;
int32_t RegGetLogFormat(char *buffer) noexcept;  // kRegStringBufferSize bytes

// The remote debugger's address (address holds kRegStringBufferSize bytes)
// and port, read once per process from "RemoteDebuggerAddress" and
// "RemoteDebuggerPort" (a decimal string) under the current user's settings
// root. When either cannot be read both are cleared (empty address, port 0).
// Returns the status of those reads on the first call, 0 on later calls.
// Null pointers are skipped.
int32_t GetRemoteDebuggerLocation(char *address, uint16_t *port) noexcept;
// The uncached reads behind it, below keyPath of the current user's hive.
int32_t readRemoteDebuggerLocation(const char *keyPath, char *address, uint16_t *port) noexcept;

}  // namespace tollan::services
