// Bringing up the development environment as the debugger of this process
// when the program must be debugged and nobody watches it yet.
#pragma once

namespace tollan::debugger {

// The settings value (a text under the settings root) that holds the path of
// the development environment's program.
inline constexpr const char *kEnvironmentPathSetting = "DevelopmentEnvironmentPath";

// Starts the stored program as this process's debugger and connects to it
// once it says it has attached. When no path is stored or the start fails,
// the developer may try again (and then pick the program, whose path is
// stored) or give up. True when a debugger now watches the process.
bool startDevelopmentEnvironment() noexcept;

}  // namespace tollan::debugger
