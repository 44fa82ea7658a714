#include "engine/engine_state.h"
#include "engine/lifecycle.h"

namespace tollan::engine {

constinit EngineState state;

bool isDetaching() noexcept
{
    return state.detaching.load();
}

bool isClosed() noexcept
{
    return state.closed.load();
}

void setStartupFailure() noexcept
{
    state.startupFailure.store(true);
}

uint32_t mainThreadId() noexcept
{
    return state.mainThreadId;
}

bool osVersionKnown() noexcept
{
    return state.platformDetected;
}

}  // namespace tollan::engine
