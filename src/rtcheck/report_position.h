// Where in the user's source a report points: the statement the thread is
// running (kept in its thread-state record by the compiled code) and the
// error position the report itself brings.
#pragma once

#include <cstdint>

namespace tollan::rtcheck {

struct SourcePosition {
    bool known;        // false: the thread has no source position at all
    const char *file;  // null when the thread has no file name
    int32_t firstLine;
    int32_t firstColumn;
    int32_t lastLine;
    int32_t lastColumn;
};

// The calling thread's position: the statement's line and column come first,
// the report's error position last; either stands for the other when it is
// missing.
SourcePosition currentSourcePosition() noexcept;

}  // namespace tollan::rtcheck
