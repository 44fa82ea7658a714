// What the calling thread's last Fmt and Scan calls did, for NumFmtdBytes,
// NumScanItems and NumScanBytes. Each thread has its own.
#pragma once

#include <cstdint>

namespace tollan::fmtio {

struct FormatResults {
    int32_t fmtdBytes;  // bytes the last Fmt call wrote to its target
    int32_t scanItems;  // targets the last Scan call filled
    int32_t scanBytes;  // bytes of its source it had read when it stopped
};

FormatResults &formatResults() noexcept;

}  // namespace tollan::fmtio
