// Shared memory is a mapping backed by the page file.
#include "platform/shared_memory.h"

#include <windows.h>

#include <new>

#include "platform/win32/wait_handle.h"

namespace tollan::platform {

namespace {

class PageFileMapping final : public SharedMemory {
public:
    PageFileMapping(HANDLE mapping, void *view, size_t size) noexcept
        : mapping_(mapping), view_(view), size_(size)
    {
    }
    ~PageFileMapping() override { UnmapViewOfFile(view_); }
    void *data() noexcept override { return view_; }
    size_t size() const noexcept override { return size_; }

private:
    win32::OwnedHandle mapping_;
    void *view_;
    size_t size_;
};

std::unique_ptr<SharedMemory> mapView(HANDLE mapping, size_t size) noexcept
{
    if (!mapping) return nullptr;
    void *view = MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, size);
    if (!view) {
        CloseHandle(mapping);
        return nullptr;
    }
    std::unique_ptr<SharedMemory> memory(new (std::nothrow) PageFileMapping(mapping, view, size));
    if (!memory) {
        UnmapViewOfFile(view);
        CloseHandle(mapping);
    }
    return memory;
}

}  // namespace

std::unique_ptr<SharedMemory> SharedMemory::create(const char *name, size_t size) noexcept
{
    if (size == 0) return nullptr;
    const auto size64 = static_cast<uint64_t>(size);
    return mapView(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE,
                                      static_cast<DWORD>(size64 >> 32), static_cast<DWORD>(size64), name),
                   size);
}

std::unique_ptr<SharedMemory> SharedMemory::open(const char *name, size_t size) noexcept
{
    if (!name || size == 0) return nullptr;
    return mapView(OpenFileMappingA(FILE_MAP_ALL_ACCESS, FALSE, name), size);
}

void removeStaleNamedObjects(int) noexcept {}

}  // namespace tollan::platform
