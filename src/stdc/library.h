// The C library's streams in the engine's start-up chain.
#pragma once

namespace tollan::stdc {

// The standard streams in their start-up state, the temporary-name counters
// at 0. Cannot fail.
bool StdCLibInitOnce() noexcept;
// Flushes and closes every stream still in use.
void StdCLibCleanup() noexcept;

// Closes every in-use stream of the table (flush, buffer, descriptor,
// temporary file, state).
void closeAllStreams() noexcept;

}  // namespace tollan::stdc
