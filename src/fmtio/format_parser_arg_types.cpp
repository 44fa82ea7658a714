// generate_arg_types: the argument table of a whole format string, for the
// checking of variable-argument calls.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fmtio/format_parser.h"
#include "logger/log.h"

namespace tollan::fmtio {
namespace {

// Assertion reports of the parser name its source module, and this line,
// which the logs of earlier releases have always shown for the check.
constexpr const char *kParserModule = "Stdlib/Parsefmt";
constexpr int32_t kOverflowCheckLine = 154;

// The end of length bytes at format; a range that wraps around the address
// space is a caller's mistake, reported, and cut at the highest address.
const char *formatEnd(const char *format, size_t length) noexcept
{
    const uintptr_t start = reinterpret_cast<uintptr_t>(format);
    const uintptr_t room = UINTPTR_MAX - start;
    if (length > room) {
        logger::reportAssertion("Overflow detected", kParserModule, "generate_arg_types", kOverflowCheckLine,
                                nullptr);
        length = room;
    }
    // Computed as an address: pointer arithmetic may not reach past the
    // object, and a caller's length may claim more than any object has.
    return reinterpret_cast<const char *>(start + length);  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace
}  // namespace tollan::fmtio

using namespace tollan::fmtio;

int32_t generate_arg_types(const char *format, size_t length, ArgTypeEntry *table, int32_t isScan,
                           int32_t *errorCode) noexcept
{
    if (format == nullptr) length = 0;
    const char *end = formatEnd(format, length);
    const char *cursor = format;
    int32_t count = 0;
    int32_t error = 0;
    for (bool first = true;; first = false) {
        FormatItem item;
        const int32_t result = ParseFormatItem(&cursor, end, table, &count, isScan, first, &item, &error);
        if (result == FMT_PARSE_ERROR) {
            if (errorCode != nullptr) *errorCode = error;
            return -static_cast<int32_t>(std::min<ptrdiff_t>(cursor - format, INT32_MAX));
        }
        if (result == FMT_PARSE_END) break;
        // A literal j skips that many characters of the format before the
        // next item.
        if (item.jMarker == FMT_MARKER_LITERAL)
            cursor += std::min<uintptr_t>(item.jValue, static_cast<uintptr_t>(end - cursor));
    }
    if (errorCode != nullptr) *errorCode = 0;
    return count;
}
