// The window messages through which the IDE and the shell talk to a program.
#pragma once

#include <cstdint>

namespace tollan::engine {

enum class WindowMessage : uint8_t {
    frameReady,
    queryCancelAutoPlay,
    genericQuery,
    genericQueryReply,
    attachDebugger,
};
inline constexpr int kWindowMessageCount = 5;

// Registers the five messages and keeps their ids.
void registerWindowMessages() noexcept;
// A message's id; 0 before registration.
uint32_t windowMessageId(WindowMessage message) noexcept;

}  // namespace tollan::engine
