#include "fmtio/fmt_engine.h"

#include "fmtio/fmt_bytes.h"
#include "fmtio/fmt_results.h"
#include "fmtio/fmt_source.h"
#include "fmtio/fmt_target.h"
#include "fmtio/fmt_walk.h"
#include "fmtio/io_error.h"
#include "fmtio/thread_state.h"

namespace tollan::fmtio {
namespace {

// A message number becomes the negative result; -1 (a failed file or
// stream) stays as it is.
int32_t failure(int32_t code) noexcept
{
    return code > 0 ? -code : code;
}

// Formats the second half into bytes; *items counts the sources.
int32_t formatSources(FormatWalk &walk, ByteBuffer &bytes, int32_t *items, FormatArguments &args) noexcept
{
    for (;;) {
        FormatItem item;
        bool more = false;
        if (const int32_t error = walk.next(&item, &more, args)) return error;
        if (!more) return 0;
        if (item.kind == FMT_ITEM_LITERAL) {
            bytes.append(item.position, static_cast<size_t>(item.size));
            continue;
        }
        Conversion conversion;
        if (const int32_t error = walk.resolve(item, Role::fmtSource, false, &conversion)) return error;
        const bool byValue = !conversion.isArray && !item.zFlag;
        if (const int32_t error = formatParameter(bytes, conversion, walk.parameterOf(item), byValue))
            return error;
        ++*items;
    }
}

}  // namespace

int32_t runFmt(const FmtDestination &destination, const char *format, FormatArguments &args) noexcept
{
    formatResults().fmtdBytes = 0;
    const bool inMemory = destination.kind == FmtDestination::Kind::memory;
    if (!format || (inMemory && !destination.memory)) return -FMT_ERR_NULL_POINTER;

    FormatWalk walk(format, false, destination.memory);
    FormatItem targetItem;
    FormatWalk::First found;
    if (const int32_t error = walk.first(&targetItem, &found, args)) return -error;
    if (found == FormatWalk::First::implied) targetItem = impliedString();
    Conversion target;
    if (const int32_t error = walk.resolve(targetItem, Role::fmtTarget, false, &target)) return -error;

    ByteBuffer bytes;
    int32_t items = 0;
    if (const int32_t error = formatSources(walk, bytes, &items, args)) return -error;
    if (bytes.failed()) return failWith(ioerror::kNoMemory);
    if (const int32_t error = deliverFmt(destination, target, bytes, &formatResults().fmtdBytes))
        return failure(error);
    return items;
}

}  // namespace tollan::fmtio
