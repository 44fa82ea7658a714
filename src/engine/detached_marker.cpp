#include "engine/detached_marker.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "platform/shared_memory.h"
#include "platform/thread.h"

namespace tollan::engine {
namespace {

constexpr const char *kMarkerBase = "Vantrel ZOR Shmen for ZORRTEHasBeenDetached for Tollan";

// A plain pointer rather than a static smart pointer: the marker must live
// until process detach removes it, whatever order static objects die in.
constinit platform::SharedMemory *marker = nullptr;

}  // namespace

void detachedMarkerName(char *buffer, size_t size) noexcept
{
    std::snprintf(buffer, size, "%s, %d", kMarkerBase, static_cast<int>(platform::currentProcessId()));
}

bool SetupZORRTEHasBeenDetachedShmem() noexcept
{
    char name[128];
    detachedMarkerName(name, sizeof name);
    auto mapping = platform::SharedMemory::create(name, sizeof(uint32_t));
    if (mapping == nullptr) return false;
    const uint32_t notDetached = 0;
    std::memcpy(mapping->data(), &notDetached, sizeof notDetached);
    delete marker;
    marker = mapping.release();
    return true;
}

void CleanupZORRTEHasBeenDetachedShmem() noexcept
{
    delete marker;
    marker = nullptr;
}

}  // namespace tollan::engine
