// The line template: the text with its fields located once, when it is set,
// so that writing a line only copies pieces.
#pragma once

#include <cstddef>
#include <cstdint>

#include "logger/line_buffer.h"
#include "logger/time_stamp.h"

namespace tollan::logger {

// What one line is built from.
struct LineFields {
    uint32_t level;
    const char *file;
    const char *function;
    int32_t line;
    const char *message;
    size_t messageLength;
};

class LineTemplate {
public:
    static constexpr const char *kDefault = "[[TIME]] [[LEVEL]] [[FUNC]] [[FILE]:[LINE]] [MSG]";

    LineTemplate() noexcept { locateFields(); }
    ~LineTemplate();
    // text_ may point into owned_: a copy would point into the original.
    LineTemplate(const LineTemplate &) = delete;
    LineTemplate &operator=(const LineTemplate &) = delete;

    // Takes a copy of text; false (the template unchanged) for a null text or
    // when there is no memory for it.
    bool assign(const char *text) noexcept;
    const char *text() const noexcept { return text_; }
    // Keeps the current text alive for good: it was handed out and cannot be
    // freed when the template changes.
    void pin() noexcept { pinned_ = true; }

    // Appends the line for `fields` to out, "[TIME]" from `time`. Only the
    // fields present cost anything: the clock and the thread id are asked
    // only when used.
    void expand(const LineFields &fields, TimeStamp &time, LineBuffer &out) const noexcept;

private:
    enum class Field : uint8_t { time, file, line, function, level, thread, message, count };

    // A literal piece of the template followed by a field (or by nothing, for
    // the last piece).
    struct Piece {
        size_t literalStart;
        size_t literalLength;
        Field field;
    };

    void locateFields() noexcept;
    static void appendField(Field field, const LineFields &fields, TimeStamp &time, LineBuffer &out) noexcept;

    char *owned_ = nullptr;  // the text once it differs from the default
    bool pinned_ = false;
    const char *text_ = kDefault;
    // Each field is expanded at its first occurrence only, so there are at
    // most one piece per field plus the closing literal.
    Piece pieces_[static_cast<size_t>(Field::count) + 1] = {};
    size_t pieceCount_ = 0;
};

}  // namespace tollan::logger
