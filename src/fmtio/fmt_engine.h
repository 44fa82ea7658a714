// The Fmt conversion engine: formats the sources of a Fmt call item by item
// into bytes, then hands them to the target.
#pragma once

#include <cstdint>

#include "fmtio/fmt_arguments.h"

namespace tollan::fmtio {

// Where a Fmt call's bytes go: a target in memory described by the format's
// first item, a file of ZOR_OpenFile, or the library's standard output.
struct FmtDestination {
    enum class Kind : uint8_t { memory, file, standardOutput };
    Kind kind;
    void *memory;
    int32_t handle;
};

// Runs one Fmt call and records its byte count for NumFmtdBytes. Returns the
// number of source items formatted; a negated message number; or -1 when
// memory ran short (I/O error 4) or the file or stream failed (its I/O
// error).
int32_t runFmt(const FmtDestination &destination, const char *format, FormatArguments &args) noexcept;

}  // namespace tollan::fmtio
