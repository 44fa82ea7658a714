// The library message table: every user-visible text, by message number.
// Each subsystem owns a range of numbers; the ranges are listed in one place,
// messages.cpp, so that adding one is a single row there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tollan::services {

// Texts for the numbers first, first + 1, ... first + texts.size() - 1.
struct MessageRange {
    int32_t first;
    std::span<const char *const> texts;
};

// The text of a message number; "Unknown message number" for a number that
// no range holds. Never null.
const char *libraryMessage(int32_t number) noexcept;

// Every range of the table, for checks that they do not overlap.
std::span<const MessageRange *const> messageRanges() noexcept;

}  // namespace tollan::services
