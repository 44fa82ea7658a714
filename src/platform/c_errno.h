// The C library's errno. On POSIX the library's streams set the host C
// library's errno (per thread already), so perror and strerror read what they
// left; the DLL keeps a per-thread errno of its own, which programs read
// through the exported accessor.
#pragma once

namespace tollan::platform {

// The calling thread's errno cell of the library's C streams.
int *cErrnoLocation() noexcept;

}  // namespace tollan::platform
