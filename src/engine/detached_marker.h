// The marker that tells other modules of the process whether the library has
// been unloaded: a named 4-byte mapping, one 32-bit word set to 0 when made.
#pragma once

#include <cstddef>

namespace tollan::engine {

// Writes the marker's name for the calling process into buffer.
void detachedMarkerName(char *buffer, size_t size) noexcept;
// Creates and maps the marker; false (nothing left behind) on failure.
bool SetupZORRTEHasBeenDetachedShmem() noexcept;
// Unmaps the marker and closes its mapping; harmless when there is none.
void CleanupZORRTEHasBeenDetachedShmem() noexcept;

}  // namespace tollan::engine
