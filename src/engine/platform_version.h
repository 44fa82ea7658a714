// The operating system's version, read once at start-up.
#pragma once

namespace tollan::engine {

// Reads and stores the major and minor version and sets the
// platform-detected flag; false when the version cannot be read.
bool SetCurrentPlatform() noexcept;

}  // namespace tollan::engine
