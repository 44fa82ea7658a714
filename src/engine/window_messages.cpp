#include "engine/window_messages.h"

#include <array>

#include "platform/system.h"

namespace tollan::engine {
namespace {

constexpr std::array<const char *, kWindowMessageCount> kNames = {
    "VtPellFrameReady",
    "QueryCancelAutoPlay",
    "Tessaly/ZOR - Generic query window message",
    "Tessaly/ZOR - Generic query reply window message",
    "Tessaly/ZOR - Attach debugger window message",
};

constinit std::array<uint32_t, kWindowMessageCount> ids{};

}  // namespace

void registerWindowMessages() noexcept
{
    for (size_t i = 0; i < kNames.size(); ++i) ids[i] = platform::registerWindowMessage(kNames[i]);
}

uint32_t windowMessageId(WindowMessage message) noexcept
{
    return ids[static_cast<size_t>(message)];
}

}  // namespace tollan::engine
