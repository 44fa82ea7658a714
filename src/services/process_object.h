// Objects that live as long as the process: built on first use in static
// storage and never destroyed, because library threads, user threads and the
// library's own shutdown may still use them while the process's static
// objects are being destroyed.
#pragma once

#include <new>

namespace tollan::services {

// The one object of type T for each Tag (a type that names its use, so that
// two libraries' locks are never one); T must be default-constructible
// without throwing.
template <typename T, typename Tag = T>
T &processObject() noexcept
{
    alignas(T) static unsigned char storage[sizeof(T)];
    static T *const object = new (storage) T;
    return *object;
}

}  // namespace tollan::services
