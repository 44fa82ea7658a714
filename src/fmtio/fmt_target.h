// Handing a Fmt call's bytes to its target: a string or a number in memory,
// a file, or the standard output.
#pragma once

#include <cstdint>

#include "fmtio/fmt_bytes.h"
#include "fmtio/fmt_conversion.h"
#include "fmtio/fmt_engine.h"

namespace tollan::fmtio {

// Writes bytes to the destination as the target item says and sets *written
// to the bytes written (the terminating NUL not counted). A string target
// gets what its width leaves room for after its text (a) and offset, and a
// NUL (none with q): more is 239 after the part that fits. A number target reads the bytes as Scan would
// (245 or 251 when they hold no number). Returns 0, a message number, or -1
// for a failed file or stream (the I/O error says why).
int32_t deliverFmt(const FmtDestination &destination, const Conversion &target, const ByteBuffer &bytes,
                   int32_t *written) noexcept;

// The item a format without first item stands for: a plain string.
FormatItem impliedString() noexcept;

}  // namespace tollan::fmtio
