// Writes test settings straight through the platform's settings store, so
// that the registry module is tested against what it did not write itself.
#pragma once

#include <cstdint>

namespace tollan::testing {

// Below the current user's hive unless a root-key number is given. Each
// returns the store's error code (0 on success).
int32_t storeString(const char *keyPath, const char *name, const char *value, uint32_t root = 2);
int32_t storeDword(const char *keyPath, const char *name, uint32_t value, uint32_t root = 2);

}  // namespace tollan::testing
