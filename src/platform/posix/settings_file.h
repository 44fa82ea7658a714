// Where the settings file lives, and reading and rewriting it safely when
// several processes use it at once.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/posix/settings_document.h"

namespace tollan::platform::posix {

// $TOLLAN_REGISTRY, else $XDG_CONFIG_HOME/tollan/registry.reg, else
// ~/.config/tollan/registry.reg; empty when there is no home to put it in.
std::string settingsFilePath();

// Reads the file at `path` into *document (a missing file is an empty one).
// Returns 0 or a Windows error code (5 access denied, 1016 I/O failure).
int32_t loadSettings(const std::string &path, SettingsDocument *document);

// Re-reads the file under an exclusive lock (flock on "<path>.lock"), lets
// `change` modify it and, when it returns true, replaces the file atomically:
// a temporary file in the same directory is written, flushed to disk and
// renamed over it. Missing directories are created. Returns 0 or a Windows
// error code; the file is left as it was on failure.
int32_t updateSettings(const std::string &path, const std::function<bool(SettingsDocument &)> &change);

}  // namespace tollan::platform::posix
