// Shared memory on shm_open: named mappings live in shared regions; an
// unnamed one is an anonymous shared mapping, as a page-file mapping without
// a name is.
#include "platform/shared_memory.h"

#include <sys/mman.h>

#include <new>

#include "platform/posix/named_region.h"

namespace tollan::platform {

namespace {

class NamedMapping final : public SharedMemory {
public:
    NamedMapping(std::unique_ptr<posix::NamedRegion> region, size_t size) noexcept
        : region_(std::move(region)), size_(size)
    {
    }
    void *data() noexcept override { return region_->payload(); }
    size_t size() const noexcept override { return size_; }

private:
    std::unique_ptr<posix::NamedRegion> region_;
    size_t size_;
};

class AnonymousMapping final : public SharedMemory {
public:
    AnonymousMapping(void *base, size_t size) noexcept : base_(base), size_(size) {}
    ~AnonymousMapping() override { munmap(base_, size_); }
    void *data() noexcept override { return base_; }
    size_t size() const noexcept override { return size_; }

private:
    void *base_;
    size_t size_;
};

std::unique_ptr<SharedMemory> acquireNamed(const char *name, size_t size, bool createIfMissing) noexcept
{
    auto region = posix::NamedRegion::acquire(posix::RegionKind::mapping, name, size, createIfMissing,
                                              nullptr, nullptr);
    if (!region) return nullptr;
    return std::unique_ptr<SharedMemory>(new (std::nothrow) NamedMapping(std::move(region), size));
}

}  // namespace

std::unique_ptr<SharedMemory> SharedMemory::create(const char *name, size_t size) noexcept
{
    if (size == 0) return nullptr;
    if (name) return acquireNamed(name, size, true);
    void *base = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (base == MAP_FAILED) return nullptr;
    std::unique_ptr<SharedMemory> mapping(new (std::nothrow) AnonymousMapping(base, size));
    if (!mapping) munmap(base, size);
    return mapping;
}

void removeStaleNamedObjects(int limit) noexcept
{
    posix::removeStaleRegions(limit);
}

std::unique_ptr<SharedMemory> SharedMemory::open(const char *name, size_t size) noexcept
{
    if (!name || size == 0) return nullptr;
    return acquireNamed(name, size, false);
}

}  // namespace tollan::platform
