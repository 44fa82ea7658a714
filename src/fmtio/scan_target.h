// Reading one parameter-taking item from bytes: a Scan target, or a Fmt
// target that is not a string (the formatted bytes are read into it).
#pragma once

#include <cstdint>

#include "fmtio/fmt_conversion.h"
#include "fmtio/scan_text.h"

namespace tollan::fmtio {

// target: where the value goes (null for a discarded item). Between the
// elements of an array, white space and then the item's j characters (a
// comma when none were given) are passed over when present; binary elements
// follow one another. After the item, the x flag passes over one more
// character, the one that ended it. A string starts at the text already in
// target with the a flag, and at the i offset; both count against its width.
// Returns 0, kSourceEnded (the source ended before the item was complete;
// elements read until then are stored), 239 (a string whose width leaves no
// room after its text and offset), or a converter's message number.
int32_t scanParameter(ScanText &text, const Conversion &conversion, void *target) noexcept;

}  // namespace tollan::fmtio
