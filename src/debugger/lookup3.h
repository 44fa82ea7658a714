// Bob Jenkins' lookup3 hash (hashlittle), the published public-domain
// algorithm: the resource table's buckets are chosen by it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tollan::debugger {

// The hash of `length` bytes at `key`, read as a little-endian byte stream,
// started from `initval`.
uint32_t hashlittle(const void *key, size_t length, uint32_t initval) noexcept;

}  // namespace tollan::debugger
