// What the platform's entry code calls: the loader's notifications about the
// library and the process's threads. Each returns DllMain's result: 1, or 0
// when the attach failed (the loader then refuses the library).
#pragma once

#include <cstdint>

namespace tollan::engine {

// Process attach: logger, thread-variable slots, the start-up chain.
int32_t processAttach(void *moduleInstance) noexcept;
// Process detach: the shutdown chain when the attach had succeeded.
int32_t processDetach() noexcept;
// A thread ends: frees its per-thread data of every library.
int32_t threadDetach() noexcept;

}  // namespace tollan::engine
