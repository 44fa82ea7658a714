// The library's configuration store: values kept under the settings root
// ("Software\Vantrel\ZOR\17.0" below the current user), such as the switch
// "useDefaultTimer" (a number) and the development environment's path
// "DevelopmentEnvironmentPath" (a text). A value that was never stored is
// simply not set and is not worth a log line; one stored with the wrong type
// is a mistake of whoever stored it and is logged at WARNING.
#pragma once

#include <cstddef>

namespace tollan::services {

// True when the switch `name` is stored as a non-zero number.
bool configurationSwitch(const char *name) noexcept;

// Copies the text stored as `name` into buffer (size bytes, terminated).
// False when it is not stored, is not a text, or does not fit.
bool configurationText(const char *name, char *buffer, size_t size) noexcept;
// Stores value as the text `name`, creating the settings root when needed.
bool storeConfigurationText(const char *name, const char *value) noexcept;

}  // namespace tollan::services
