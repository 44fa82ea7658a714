// What the format parser tests share: the families, and the argument table
// written as a short text so that a whole table compares in one line.
#pragma once

#include <cstdint>
#include <string>

#include <tollan/fmtio.h>

namespace tollan::testing {

enum Family : int32_t { kFmt = 0, kScan = 1 };

// One word per entry: the kind (i integer, f real, s string), 'a' for an
// array, the element size, '*' for an integer consumed by a '*'; e.g.
// "s1 ia4 i4*".
std::string describeTable(const ArgTypeEntry *table, int32_t count);

}  // namespace tollan::testing
