// Reading a Scan target string: the characters of its set, up to its width
// or its j characters.
#pragma once

#include <cstdint>

#include "fmtio/fmt_conversion.h"
#include "fmtio/scan_text.h"

namespace tollan::fmtio {

// Skips white space first, except for an l item or with the y flag. Then
// takes characters while they are in the set, fewer than the width have been
// taken and the item's j characters (when given) do not begin there; those j
// characters are then passed over. target (null for a discarded item)
// receives the characters and, without the q flag, a NUL after them; a width
// w limits the string to w characters (w + 1 bytes with the NUL).
// Returns 0 or kSourceEnded (nothing left to read: target is untouched).
int32_t scanString(ScanText &text, const Conversion &conversion, char *target) noexcept;

}  // namespace tollan::fmtio
