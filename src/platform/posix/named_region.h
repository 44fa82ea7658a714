// Named shared-memory regions: the stand-in for the named kernel objects of
// Windows (events, mutexes, file mappings), visible to every process of the
// same user. The object "/tollan.<uid>.<name>" ('/' and '\' in the name become
// '_', mode 0600) holds a small header followed by the payload. The process
// that created it removes the name when it closes it (a child that inherited
// the region through fork never does); a region whose creator has died is
// removed by the next process that asks for the name, and by the sweeps at
// every start-up and shutdown of the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace tollan::platform::posix {

// What a region holds; a name opened as the wrong kind fails, as on Windows.
enum class RegionKind : uint32_t { event = 1, mutex = 2, mapping = 3 };

class NamedRegion {
public:
    // Prepares the payload of a region just created (zero-filled) before any
    // other process can use it; false abandons the creation.
    using Initializer = bool (*)(void *payload, void *context);

    // Creates the region, or opens the live one of that name (then `initialize`
    // is not called). With createIfMissing false, only an existing region is
    // opened. The payload of an existing region must be at least payloadSize
    // bytes. Null on failure.
    static std::unique_ptr<NamedRegion> acquire(RegionKind kind, const char *name, size_t payloadSize,
                                                bool createIfMissing, Initializer initialize,
                                                void *context) noexcept;
    ~NamedRegion();
    NamedRegion(const NamedRegion &) = delete;
    NamedRegion &operator=(const NamedRegion &) = delete;

    void *payload() const noexcept { return payload_; }
    bool created() const noexcept { return created_; }
    // Leaves the region mapped when this object goes (its name is still
    // removed by the creator): a robust mutex still held inside it must stay
    // reachable, so that the system can mark it abandoned when its owner ends.
    void keepMapped() noexcept { keepMapped_ = true; }

private:
    NamedRegion(std::string objectName, void *base, size_t mappedSize, bool created) noexcept;

    std::string objectName_;
    void *base_;
    size_t mappedSize_;
    void *payload_;
    bool created_;
    int ownerPid_;  // the process that created it
    bool keepMapped_ = false;
};

// The shared-memory object name for `name`; empty when the name is unusable.
std::string regionObjectName(const char *name);

// Removes up to `limit` of this user's regions whose creator has ended.
void removeStaleRegions(int limit) noexcept;

}  // namespace tollan::platform::posix
