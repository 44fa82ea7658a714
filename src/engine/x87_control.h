// The x87 floating-point unit's exception masks.
#pragma once

namespace tollan::engine {

// Masks all six x87 exceptions (control word |= 0x3F) so that compiled
// modules never trap on floating-point errors. Does nothing on processors
// without an x87 unit.
void maskX87Exceptions() noexcept;

}  // namespace tollan::engine
