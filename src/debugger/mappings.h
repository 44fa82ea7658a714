// Named mappings of the debugger link, with the system's functions or, on a
// real-time target (the environment variable OS begins with "PHARLAP"), the
// library's own in-process replacements, which such a target needs because
// it has no named kernel objects.
#pragma once

#include <cstddef>
#include <memory>

#include "platform/shared_memory.h"

namespace tollan::debugger {

struct MappingFunctions {
    std::unique_ptr<platform::SharedMemory> (*create)(const char *name, size_t size) noexcept;
    std::unique_ptr<platform::SharedMemory> (*open)(const char *name, size_t size) noexcept;
};

// The system's functions, or the in-process ones on a real-time target.
const MappingFunctions &mappingFunctions() noexcept;
// The in-process replacements themselves, for tests.
const MappingFunctions &inProcessMappings() noexcept;

}  // namespace tollan::debugger
