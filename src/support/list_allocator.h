// The library's default allocation-callback record for handle-based lists.
#pragma once

#include <tollan/list.h>

namespace tollan::support {

// Fills the default record with the heap-backed callbacks. Start-up calls it
// before any list is made; calling it again changes nothing.
void installDefaultListAllocator() noexcept;

// The default record (all slots null until installed).
const CollectionMemAllocFunctions *defaultListAllocator() noexcept;

}  // namespace tollan::support
