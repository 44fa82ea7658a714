// Run-state events for the library's own libraries. A library registers a
// callback (as module 0) during start-up and hears the same start and stop
// events that user modules get.
#pragma once

#include <cstdint>

namespace tollan::services {

inline constexpr int32_t kRunStateStart = 0;
inline constexpr int32_t kRunStateStop = 4;
inline constexpr int32_t kRunStateStarted = 5;
inline constexpr int32_t kRunStateAboutToStop = 6;

// Adds callback for module 0. Returns 1, or 0 when the table already holds
// its 32 callbacks. A callback that is already registered is not added twice.
int32_t RegisterRunStateChangeCallback(void (*callback)(int32_t event)) noexcept;

}  // namespace tollan::services
