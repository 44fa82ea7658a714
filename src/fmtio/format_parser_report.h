// How the Fmt and Scan engines report a format string that does not parse.
#pragma once

#include <cstdint>

namespace tollan::fmtio {

// Reports a parse error of a format string in a checked run (debugging
// level 2 or more, break on protection errors on; otherwise nothing): a
// non-fatal run-time error with message 258, "Error at or near character %d
// in the format string: %s", with the 1-based character number of
// errorOffset (the byte offset that ParseFormatItem left in its cursor, or
// the negated result of generate_arg_types) and the text of messageNumber.
// The report points at the statement the thread is running. Non-fatal: the
// engine goes on to return its error.
void reportFormatError(int32_t errorOffset, int32_t messageNumber) noexcept;

}  // namespace tollan::fmtio
