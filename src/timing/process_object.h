// Objects that live as long as the process: built on first use in static
// storage and never destroyed, because timer threads and user threads may
// still use them while the process's static objects are being destroyed.
#pragma once

#include <new>

namespace tollan::timing {

// The one object of type T (per Tag); T must be default-constructible
// without throwing.
template <typename T, int Tag = 0>
T &processObject() noexcept
{
    alignas(T) static unsigned char storage[sizeof(T)];
    static T *const object = new (storage) T;
    return *object;
}

}  // namespace tollan::timing
