// Where the library stands in its life: the queries other subsystems need
// while the start-up chain runs and while the process goes down.
#pragma once

#include <cstdint>

namespace tollan::engine {

// True from the first moment of process detach on. Code that must not touch
// other modules while the process is going down checks this first.
bool isDetaching() noexcept;
// True once the shutdown chain has finished; the library does no more work.
bool isClosed() noexcept;
// Records that a resource the start-up chain needs could not be had (no
// thread-local index, a debug link that cannot be set up). The chain fails.
void setStartupFailure() noexcept;
// The id of the thread that ran start-up.
uint32_t mainThreadId() noexcept;
// True once the operating system's version has been read at start-up.
bool osVersionKnown() noexcept;

}  // namespace tollan::engine
