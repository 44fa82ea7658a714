// Writing a Fmt source string: its text from the i offset up to the first
// character outside its set, cut or padded to the width.
#pragma once

#include <cstdint>

#include "fmtio/fmt_bytes.h"
#include "fmtio/fmt_conversion.h"

namespace tollan::fmtio {

// text: the argument (not null). A string without width always ends at its
// NUL, whatever its set says. With a width w exactly w bytes are written:
// the text cut to w, or padded with the q byte (blank, or NUL with q) after
// it, before it with y. Returns 0.
int32_t formatString(ByteBuffer &out, const Conversion &conversion, const char *text) noexcept;

}  // namespace tollan::fmtio
