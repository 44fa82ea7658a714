// The bytes a Scan call reads: a string in memory as its first item bounds
// it, a number formatted first, a line or the rest of a file, or a line of
// the standard input.
#pragma once

#include <cstdint>

#include "fmtio/fmt_bytes.h"
#include "fmtio/fmt_conversion.h"
#include "fmtio/scan_engine.h"
#include "fmtio/scan_text.h"

namespace tollan::fmtio {

// Fills *text with the source. held keeps bytes that had to be made or read.
// A file source starts its i offset bytes past the file's position and is an
// l item (one line, its LF read too) or an s item (the rest of the file, or
// width bytes); the standard input gives one line. Returns 0, a message
// number (234 for a file or input source that is not a string, 255 for a
// null source) or -1 for a failed file or stream.
int32_t takeSource(const ScanOrigin &origin, const Conversion &source, ByteBuffer &held,
                   ScanText *text) noexcept;

}  // namespace tollan::fmtio
