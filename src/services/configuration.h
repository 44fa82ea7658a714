// The library's configuration store: switches kept as numbers under the
// settings root ("Software\Vantrel\ZOR\17.0" below the current user), such as
// "useDefaultTimer". A switch that was never stored is simply off and is not
// worth a log line; one stored as something other than a number is a
// mistake of whoever stored it and is logged at WARNING.
#pragma once

namespace tollan::services {

// True when the switch `name` is stored as a non-zero number.
bool configurationSwitch(const char *name) noexcept;

}  // namespace tollan::services
