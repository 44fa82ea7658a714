// The Scan conversion engine: takes the bytes of the source that the
// format's first item describes, then reads the targets from them item by
// item.
#pragma once

#include <cstdint>

#include "fmtio/fmt_arguments.h"

namespace tollan::fmtio {

// Where a Scan call reads from: a source in memory described by the format's
// first item, a file of ZOR_OpenFile, or the library's standard input.
struct ScanOrigin {
    enum class Kind : uint8_t { memory, file, standardInput };
    Kind kind;
    const void *memory;
    int32_t handle;
};

// Runs one Scan call and records its counts for NumScanItems and
// NumScanBytes. Returns the number of targets filled (the Scan stops without
// error where the source ends or a literal does not match); a negated message
// number; or -1 when memory ran short (I/O error 4) or the file or stream
// failed (its I/O error).
int32_t runScan(const ScanOrigin &origin, const char *format, FormatArguments &args) noexcept;

}  // namespace tollan::fmtio
