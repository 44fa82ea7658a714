// The serial library's error state: the calling thread's last error, the
// library-wide rs232err, the texts of the codes, and the logging of failures.
#pragma once

#include <cstdint>
#include <source_location>

namespace tollan::rs232 {

// The source module the library's log lines name.
inline constexpr const char *kLogModule = "Stdlib/Qxrs232";

// Records `code` (a value of 0 or more as 0) as the calling thread's last
// error and in rs232err; returns `code` unchanged.
int32_t SetRS232Err(int32_t code) noexcept;
// The calling thread's last error.
int32_t threadError() noexcept;

// Logs a failure at WARNING with the function's name, the line and the
// error's text; nothing for a code of 0 or more.
void logFailure(int32_t code, const char *function,
                std::source_location where = std::source_location::current()) noexcept;

// The text of a code from the library's table ("Unknown error number" for others).
const char *errorText(int32_t code) noexcept;

// The calling thread's last serial error of the system as a library code:
// 0 none; -12 no memory; -7 open failed; -99 time-out; -1 anything else.
int32_t MapWin32CommError() noexcept;

// The per-thread error record's slot.
bool reserveErrorSlot() noexcept;
void releaseErrorSlot() noexcept;
void freeThreadErrorRecord() noexcept;

}  // namespace tollan::rs232
