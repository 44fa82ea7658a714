#include "services/line_ends.h"

#include <algorithm>
#include <cstring>

namespace tollan::services {

size_t dropCarriageReturns(char *data, size_t length) noexcept
{
    char *const end = data + length;
    char *cr = static_cast<char *>(std::memchr(data, '\r', length));
    if (cr == nullptr) return length;
    // Everything before the first CR stays where it is; from there on bytes
    // move down over the dropped ones, a run between two CRs at a time.
    char *out = cr;
    const char *in = cr;
    while (in < end) {
        // in points at a CR.
        if (in + 1 < end && in[1] == '\n') ++in;  // drop it; the LF starts the next run
        const char *stop =
            in + 1 < end
                ? static_cast<const char *>(std::memchr(in + 1, '\r', static_cast<size_t>(end - in - 1)))
                : nullptr;
        if (stop == nullptr) stop = end;
        const size_t run = static_cast<size_t>(stop - in);
        std::memmove(out, in, run);
        out += run;
        in = stop;
    }
    return static_cast<size_t>(out - data);
}

size_t expandLineFeeds(const char *source, size_t length, char *target, size_t capacity,
                       size_t *consumed) noexcept
{
    size_t in = 0;
    size_t out = 0;
    while (in < length && out < capacity) {
        const size_t span = std::min(length - in, capacity - out);
        const char *lf = static_cast<const char *>(std::memchr(source + in, '\n', span));
        const size_t run = lf != nullptr ? static_cast<size_t>(lf - (source + in)) : span;
        std::memcpy(target + out, source + in, run);
        in += run;
        out += run;
        if (lf == nullptr) continue;
        if (capacity - out < 2) break;
        target[out++] = '\r';
        target[out++] = '\n';
        ++in;
    }
    *consumed = in;
    return out;
}

}  // namespace tollan::services
