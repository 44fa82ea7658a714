// Named shared memory (a page-file mapping on Windows, shm_open elsewhere).
#pragma once

#include <cstddef>
#include <memory>

namespace tollan::platform {

class SharedMemory {
public:
    virtual ~SharedMemory() = default;  // unmaps; the creator also removes the name
    // Creates (or opens, when it exists) a mapping of `size` bytes, zero-filled
    // when new. Null on failure.
    static std::unique_ptr<SharedMemory> create(const char *name, size_t size) noexcept;
    // Opens an existing mapping; null when there is none.
    static std::unique_ptr<SharedMemory> open(const char *name, size_t size) noexcept;
    virtual void *data() noexcept = 0;
    virtual size_t size() const noexcept = 0;
};

// Removes up to `limit` named objects (mappings, events, mutexes) of this
// user whose creating process has ended without removing them (it was
// killed). Windows' kernel objects end with their last process, so there is
// nothing to do there.
void removeStaleNamedObjects(int limit) noexcept;

}  // namespace tollan::platform
