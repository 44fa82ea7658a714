#include "engine/engine_state.h"

namespace tollan::engine {

constinit EngineState state;

}  // namespace tollan::engine
