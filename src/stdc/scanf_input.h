// The scanf engine's view of its TextSource: it counts the bytes taken (for
// %n), never asks the source again once it has ended, and cuts fields to
// their width.
#pragma once

#include <cstddef>

#include "stdc/scanf_conversion.h"
#include "stdc/scanf_engine.h"

namespace tollan::stdc {

// White space as the C locale has it; the engine knows no other.
inline bool isScanSpace(int byte) noexcept
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

class ScanInput {
public:
    explicit ScanInput(TextSource &source) noexcept : source_(source) {}

    // The next byte, or -1 once the source has ended (or failed).
    int next() noexcept;
    // Gives back `byte`, the last value of next() (never -1).
    void giveBack(int byte) noexcept;
    // Reads white space up to the first other byte, which stays unread.
    // False when the source ended first.
    bool skipWhiteSpace() noexcept;

    // True once the source has returned -1.
    bool ended() const noexcept { return ended_; }
    // The bytes taken and kept so far.
    size_t consumed() const noexcept { return consumed_; }

private:
    TextSource &source_;
    size_t consumed_ = 0;
    bool ended_ = false;
};

// One field of a conversion: at most `width` bytes of the input.
class ScanField {
public:
    ScanField(ScanInput &input, size_t width) noexcept : input_(input), left_(width) {}

    // The next byte of the field; -1 when the width is used up or the
    // source has ended.
    int next() noexcept;
    // Gives back `byte`, the last value of next() (never -1).
    void giveBack(int byte) noexcept;

    // Bytes of the width not yet used.
    size_t left() const noexcept { return left_; }
    // How a conversion that cannot use what it read ends: an input failure
    // when the source ended before the field had a byte, otherwise a
    // matching failure.
    ScanOutcome failure() const noexcept;

private:
    ScanInput &input_;
    size_t left_;
    size_t taken_ = 0;
};

}  // namespace tollan::stdc
