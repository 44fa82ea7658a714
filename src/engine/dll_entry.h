// What the platform's entry code calls: the loader's notifications about the
// library and the process's threads. Each returns DllMain's result: 1, or 0
// when the attach failed (the loader then refuses the library).
#pragma once

#include <cstdint>

namespace tollan::engine {

// Process attach: logger, thread-variable slots, the start-up chain.
int32_t processAttach(void *moduleInstance) noexcept;
// Process detach: the shutdown chain when the attach had succeeded.
// othersStopped: the system has already stopped every other thread of the
// process (Windows at process exit), so nothing is waited for.
int32_t processDetach(bool othersStopped) noexcept;
// A thread ends: frees its per-thread data of every library.
int32_t threadDetach() noexcept;

}  // namespace tollan::engine
