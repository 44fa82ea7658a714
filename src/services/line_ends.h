// Line-end translation of text files: CR LF in the file, LF in the program.
#pragma once

#include <cstddef>

namespace tollan::services {

// Removes, in place, every CR of data[0, length) that is directly followed
// by LF within the range; a CR in the last place stays. Returns the new length.
size_t dropCarriageReturns(char *data, size_t length) noexcept;

// Copies source to target, writing each LF as CR LF, until the source ends
// or target (capacity bytes, at least 2) is full; an LF is never split from
// its CR. Sets *consumed to the source bytes taken and returns the bytes put.
size_t expandLineFeeds(const char *source, size_t length, char *target, size_t capacity,
                       size_t *consumed) noexcept;

}  // namespace tollan::services
